#pragma once

#include <QFont>
#include <QStringList>

class QWidget;

/// Names what @p window, which is on view, shows of its texts in part only: labels, buttons, check
/// boxes, combo boxes with any of their items, number fields, and the sections of headers. Empty if
/// everything can be read.
QStringList cutTexts(const QWidget& window);

/// Makes the application's fonts larger by a factor for as long as it lives, and nothing else.
class LargerFont
{
public:
    explicit LargerFont(double factor);
    ~LargerFont();
    LargerFont(const LargerFont&) = delete;
    LargerFont& operator=(const LargerFont&) = delete;

    /// Rows of a test at 100 %, 125 % and 150 %, with the factor in the column "factor".
    static void addRows();

private:
    const QFont m_before;
};
