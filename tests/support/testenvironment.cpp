#include "testenvironment.h"

#include <QFile>

TestEnvironment::TestEnvironment()
{
    if (!m_home.isValid())
        qFatal("no home folder for the test: %s", qPrintable(m_home.errorString()));
    const QByteArray home = QFile::encodeName(m_home.path());
    qputenv("HOME", home);
    qputenv("XDG_RUNTIME_DIR", home);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
}
