#pragma once

#include <QByteArray>

// The two forms in which the preferences are written, to the byte.

inline const QByteArray SHOWN_AT_START = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                         "<VORNIX>\n"
                                         "    <WHATISNEW SHOW_AT_START=\"true\"/>\n"
                                         "</VORNIX>\n";
inline const QByteArray NOT_SHOWN_AT_START = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                             "<VORNIX>\n"
                                             "    <WHATISNEW/>\n"
                                             "</VORNIX>\n";
