#pragma once

class IOManager;
class QString;

/// Puts one line into the host's message log; what Latin-1 cannot express becomes a question mark.
void logToHost(IOManager* iom, const QString& text);
