#pragma once

#include <fixturefiles.h>

#include <QMap>

/// A frontend as it is delivered, in a folder of its own: the program, the built module and update
/// files.
class DeliveredFrontend
{
public:
    /// @param updateFiles contents by file name
    explicit DeliveredFrontend(const QMap<QString, QByteArray>& updateFiles);
    QString folder() const { return m_folder.path(); }
    QString program() const { return m_folder.path("demo-frontend"); }

private:
    FixtureFolder m_folder;
};
