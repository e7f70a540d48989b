#pragma once

#include <QPointer>
#include <QVector>

class QAction;
class QMenu;
class QMenuBar;

/// A menu bar in which menus and entries stand by their order numbers, whoever brings them in which
/// order. Of equal numbers the earlier comes first.
class OrderedMenus
{
public:
    /// @param bar must outlive this object
    explicit OrderedMenus(QMenuBar* bar) : m_bar(bar) {}

    /// Places @p action in the menu titled @p menuTitle, which is made at @p menuOrder if there is
    /// none yet. Mnemonics do not count in titles. The action stays its owner's.
    void place(QAction* action, int entryOrder, const QString& menuTitle, int menuOrder);

    /// Takes an entry out, and its menu with it if that is empty then.
    void remove(QAction* action);

private:
    struct Entry
    {
        int order;
        QPointer<QAction> action;
    };
    struct Menu
    {
        int order;
        QMenu* menu;
        QVector<Entry> entries; // ascending
    };

    Menu& menuTitled(const QString& title, int order);

    QMenuBar* m_bar;
    QVector<Menu> m_menus; // ascending
};
