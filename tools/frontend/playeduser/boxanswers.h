#pragma once

#include <QMessageBox>

/// What the played user makes of a message box.
struct BoxAnswer
{
    QPushButton* button; ///< to be pressed; belongs to the box
    QString pictureName; ///< for a picture of the box
    bool isRefusal;      ///< something was refused
    bool asksForPower;   ///< it asks for a restart that no command brings about
};

/// The answer to @p box, which has a button. The frontend's own boxes are known by their object
/// names, those of the module by their texts, as nothing else about them is fixed.
BoxAnswer answerTo(const QMessageBox& box);
