#include "boxanswers.h"

#include <QPushButton>

#include <algorithm>

namespace {

/// What is pressed in a message box of this name, or one whose text has this part.
struct BoxRule
{
    QString key;
    QMessageBox::StandardButton button;
    QString pictureName;
    bool isRefusal = false;
    bool asksForPower = false;
};

const QVector<BoxRule>& namedBoxes()
{
    static const QVector<BoxRule> rules = {
        {"deliveryRefused", QMessageBox::Ok, "delivery-refused", true},
        {"deliveryDeparts", QMessageBox::Ok, "delivery-departs"},
        {"stepsBack", QMessageBox::NoButton, "steps-back", true},
        {"otherHost", QMessageBox::Ok, "other-host", true},
    };
    return rules;
}

const QVector<BoxRule>& boxesByText()
{
    static const QVector<BoxRule> rules = {
        {"new firmware to your camera(s)", QMessageBox::Yes, "confirm-cameras"},
        {"Please be aware that", QMessageBox::Yes, "confirm-major-step"},
        {"Do you really want to update?", QMessageBox::Yes, "confirm-update"},
        {"Cascaded System only partially", QMessageBox::Ok, "partial-cascade"},
        {"Don't stop the update process", QMessageBox::Ok, "do-not-stop"},
        {"Do you want to restart", QMessageBox::Yes, "restart"},
        {"Do you want to shut down", QMessageBox::Yes, "shut-down"},
        {"VORNIX3 will be closed now", QMessageBox::Ok, "restart-by-hand", false, true},
        {"not possible due to", QMessageBox::Ok, "not-possible", true},
        {"pdate failed", QMessageBox::Ok, "update-failed", true},
        {"Nothing was updated", QMessageBox::Ok, "nothing-updated", true},
        {"fallback IP address", QMessageBox::Ok, "fallback-address"},
        {"must be restarted manually", QMessageBox::Ok, "power-off-cameras"},
        {"To start the update process later", QMessageBox::Ok, "update-later"},
        {"demo frontend", QMessageBox::Ok, "about"},
        {"", QMessageBox::NoButton, "message"},
    };
    return rules;
}

const BoxRule& ruleFor(const QMessageBox& box)
{
    for (const BoxRule& rule : namedBoxes()) {
        if (box.objectName() == rule.key)
            return rule;
    }
    const QString text = box.text() + QLatin1Char('\n') + box.informativeText();
    return *std::find_if(boxesByText().begin(), boxesByText().end(),
                         [&](const BoxRule& it) { return text.contains(it.key); });
}

} // namespace

BoxAnswer answerTo(const QMessageBox& box)
{
    const BoxRule& rule = ruleFor(box);
    auto* button = qobject_cast<QPushButton*>(box.button(rule.button));
    if (!button)
        button = box.defaultButton();
    if (!button)
        button = qobject_cast<QPushButton*>(box.buttons().constFirst());
    return {button, rule.pictureName, rule.isRefusal, rule.asksForPower};
}
