#pragma once

#include <QString>

#include <optional>

class QWidget;

/// Saves numbered pictures of windows. The numbers go on from one start of the program to the next,
/// and behind those of pictures that stand in the folder already.
class Screenshots
{
public:
    /// @param folder made when it is needed; empty: nothing is saved
    /// @param counterFile keeps the last number
    Screenshots(const QString& folder, const QString& counterFile);

    /// Saves what @p window shows as NN-NAME.png.
    /// @param error filled on failure; must not be null
    /// @return name of the file, empty if pictures are not wanted; nullopt if it could not be saved
    std::optional<QString> save(QWidget& window, const QString& name, QString* error);

private:
    int nextNumber() const;

    bool isTaken(int number) const;

    QString m_folder;
    QString m_counterFile;
};
