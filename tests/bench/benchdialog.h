#pragma once

#include "ZanUpdateModule2GSettingsdlg.h"
#include "formattingchannel.h"
#include "newfeaturedialog.h"

#include <BackendVersions>

/// The update dialog on a channel that only expands its texts.
class BenchDialog
{
public:
    ZanUpdateModule2GSettingsdlg& dialog() { return m_dialog; }

private:
    FormattingChannel m_channel;
    BackendVersions m_versions{VersionInfo(3, 3, 0), VersionInfo(1, 23), VersionInfo(1, 4),
                               QStringLiteral("ZAN")};
    NewFeatureDialog m_viewer{nullptr, &m_versions};
    ZanUpdateModule2GSettingsdlg m_dialog{&m_channel, nullptr, &m_versions, QStringLiteral("bench"),
                                          &m_viewer};
};
