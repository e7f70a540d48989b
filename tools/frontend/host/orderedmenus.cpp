#include "orderedmenus.h"

#include <QMenu>
#include <QMenuBar>

#include <algorithm>

namespace {

QString withoutMnemonic(QString title)
{
    return title.remove(QLatin1Char('&'));
}

// Behind all that have the same number or a lower one.
template <typename Item>
int placeFor(const QVector<Item>& items, int order)
{
    const auto* const next = std::find_if(items.begin(), items.end(),
                                          [&](const Item& item) { return item.order > order; });
    return static_cast<int>(next - items.begin());
}

} // namespace

void OrderedMenus::place(QAction* action, int entryOrder, const QString& menuTitle, int menuOrder)
{
    Menu& menu = menuTitled(menuTitle, menuOrder);
    const int index = placeFor(menu.entries, entryOrder);
    QAction* next = index < menu.entries.size() ? menu.entries.at(index).action.data() : nullptr;
    menu.menu->insertAction(next, action);
    menu.entries.insert(index, {entryOrder, action});
}

void OrderedMenus::remove(QAction* action)
{
    for (int index = m_menus.size() - 1; index >= 0; --index) {
        Menu& menu = m_menus[index];
        menu.menu->removeAction(action);
        menu.entries.erase(
            std::remove_if(menu.entries.begin(), menu.entries.end(),
                           [&](const Entry& entry) { return entry.action == action; }),
            menu.entries.end());
        if (menu.entries.isEmpty()) {
            delete menu.menu;
            m_menus.remove(index);
        }
    }
}

OrderedMenus::Menu& OrderedMenus::menuTitled(const QString& title, int order)
{
    auto* const known = std::find_if(m_menus.begin(), m_menus.end(), [&](const Menu& menu) {
        return withoutMnemonic(menu.menu->title()) == withoutMnemonic(title);
    });
    if (known != m_menus.end())
        return *known;

    const int index = placeFor(m_menus, order);
    auto* menu = new QMenu(title, m_bar);
    menu->setToolTipsVisible(true); // they tell why an entry is disabled
    m_bar->insertMenu(index < m_menus.size() ? m_menus.at(index).menu->menuAction() : nullptr,
                      menu);
    m_menus.insert(index, {order, menu, {}});
    return m_menus[index];
}
