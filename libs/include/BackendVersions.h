#pragma once

#include "VersionInfo.h"

#include <QMetaType>
#include <QString>

#include <type_traits>
#include <utility>

/// What the backend reports about itself, immutable after construction.
///
/// The host constructs and owns the record and must keep it alive until exit_module() has freed the
/// dialogs; the plug-in only reads it. It travels to the plug-in as a pointer inside a QVariant.
class BackendVersions
{
public:
    /// @param pt       version of the tracking software of the system
    /// @param protocolVersion version of the command protocol that the backend speaks
    /// @param ct       version of the controller firmware
    /// @param model    controller model text, for example one that starts with "BRIARSCOPE"
    BackendVersions(VersionInfo pt, VersionInfo protocolVersion, VersionInfo ct, QString model)
        : sysPt(pt), prot(protocolVersion), sysCt(ct), mod(std::move(model))
    {
    }

    /// Version of the tracking software of the system.
    const VersionInfo& systemPt() const { return sysPt; }
    /// Version of the command protocol that the backend speaks.
    const VersionInfo& protocol() const { return prot; }
    /// Version of the controller firmware.
    const VersionInfo& systemCt() const { return sysCt; }
    /// Model text of the controller.
    const QString& zanModel() const { return mod; }

private:
    VersionInfo sysPt;
    VersionInfo prot;
    VersionInfo sysCt;
    QString mod;
};

static_assert(std::is_standard_layout_v<BackendVersions> && !std::is_polymorphic_v<BackendVersions>,
              "host and plug-in share the layout of BackendVersions");
static_assert(sizeof(BackendVersions) ==
                  (3 * sizeof(VersionInfo) + sizeof(QString) + alignof(QString) - 1) /
                      alignof(QString) * alignof(QString),
              "BackendVersions is three versions and one text");

Q_DECLARE_METATYPE(BackendVersions*)
