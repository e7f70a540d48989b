#pragma once

#include <QTemporaryDir>

/// Gives the process a home folder of its own, which goes with this object, and a platform without
/// a display unless another one was asked for. To be made before the application object.
class TestEnvironment
{
public:
    TestEnvironment();

    QString home() const { return m_home.path(); }

private:
    QTemporaryDir m_home;
};
