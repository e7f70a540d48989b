#pragma once

#include "ui_newfeaturedialog.h"

#include <VersionInfo>

#include <QDialog>
#include <QList>
#include <QString>
#include <QStringList>

class BackendVersions;

/// A note's version during sorting, read from the note's file name.
class Versions
{
public:
    Versions() = default;
    /// @param text file name in the form v3_1_0.html
    explicit Versions(QString text);

    /// Takes another file name; a part that is no number counts as 0.
    void setVersionString(QString text);
    /// The file name as given.
    const QString& getVersionStr() const { return sVersion; }
    /// Whether this note is older than @p other. Not null.
    bool isLess(const Versions* other) const;
    /// Whether this note is newer than @p other. Not null.
    bool isGreater(const Versions* other) const;

private:
    void setVersions();

    int major = 0;
    int minor = 0;
    int patch = 0;
    QString sVersion;
};

/// Order of notes, oldest first.
bool versionIsLessThen(Versions* first, Versions* second);

/// The window "New Features": the release notes up to the frontend's own version, newest first.
///
/// The notes lie in the folder "whats_new" beside the program and are looked up anew each time.
/// User interface thread only.
class NewFeatureDialog : public QDialog
{
    Q_OBJECT

public:
    /// @param beVers backend's versions, not owned
    NewFeatureDialog(QWidget* parent, BackendVersions* beVers);
    ~NewFeatureDialog() override;

    /// Whether the window is opened by the start of the program: then it stays away without notes.
    void set_trigger_at_start(bool is_start_up) { m_trigger_at_startup = is_start_up; }

public slots:
    /// Shows the newest note and runs the window modally.
    /// @return what QDialog::exec() returns; 0 if there was nothing to show at start
    int update_and_exec();
    /// Takes the frontend's version text, for example v3.1.0; ignores a text that is no version.
    void onSendFEVersion(QString FE_version);
    /// Takes the host's word on the theme.
    void onDarkThemeEnabled(bool bDarkThemeEnabled);

private slots:
    void on_pushButton_exit_clicked();
    void on_pushButton_show_more_clicked();

private:
    QStringList search_dir(const QString& sDir, const QString& sSeachDir);
    void sortAccordingVersions(QStringList* list);
    void qtSort(QList<Versions*>* list);
    bool is_version_available(int major, int minor, int patch);
    bool load_html(QStringList file_list, bool show_all);
    QString note(const QString& fileName);

    Ui::NewFeatureDialog ui;
    BackendVersions* beVers;
    bool m_show_next_time = true;
    bool m_trigger_at_startup = false;
    VersionInfo vornix2;
};
