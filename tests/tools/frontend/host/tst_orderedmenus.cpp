#include <orderedmenus.h>

#include <widgettestmain.h>

#include <QAction>
#include <QMenu>
#include <QMenuBar>

namespace {

QStringList texts(const QList<QAction*>& actions)
{
    QStringList result;
    for (const QAction* action : actions)
        result += action->text();
    return result;
}

} // namespace

class TestOrderedMenus : public QObject
{
    Q_OBJECT

private slots:
    void menusStandByTheirNumbers()
    {
        QMenuBar bar;
        OrderedMenus menus(&bar);
        QAction action("x");
        menus.place(&action, 1, "&Help", 700);
        menus.place(&action, 1, "&VORNIX3", 100);
        menus.place(&action, 1, "V&iew", 300);
        menus.place(&action, 1, "Also 300", 300);
        QCOMPARE(texts(bar.actions()), (QStringList{"&VORNIX3", "V&iew", "Also 300", "&Help"}));
    }

    void entriesStandByTheirNumbers()
    {
        QMenuBar bar;
        OrderedMenus menus(&bar);
        QAction about("About");
        QAction update("Update");
        QAction news("News");
        QAction sameAsNews("Same as news");
        menus.place(&about, 90, "&Help", 700);
        menus.place(&update, 31, "&Help", 700);
        menus.place(&news, 30, "&Help", 700);
        menus.place(&sameAsNews, 30, "&Help", 700);
        QCOMPARE(texts(bar.actions().constFirst()->menu()->actions()),
                 (QStringList{"News", "Same as news", "Update", "About"}));
    }

    void menusAreToldApartByTitleWithoutMnemonic()
    {
        QMenuBar bar;
        OrderedMenus menus(&bar);
        QAction first("first");
        QAction second("second");
        menus.place(&first, 1, "&Help", 700);
        menus.place(&second, 2, "H&elp", 10);
        QCOMPARE(texts(bar.actions()), QStringList{"&Help"});
        QCOMPARE(texts(bar.actions().constFirst()->menu()->actions()),
                 (QStringList{"first", "second"}));
    }

    void emptyMenusGoWithTheirLastEntry()
    {
        QMenuBar bar;
        OrderedMenus menus(&bar);
        QAction own("own");
        QAction foreign("foreign");
        QAction alone("alone");
        menus.place(&own, 1, "&Help", 700);
        menus.place(&foreign, 2, "&Help", 700);
        menus.place(&alone, 1, "&Tools", 400);
        menus.remove(&alone);
        menus.remove(&foreign);
        QCOMPARE(texts(bar.actions()), QStringList{"&Help"});
        QCOMPARE(texts(bar.actions().constFirst()->menu()->actions()), QStringList{"own"});
        menus.place(&foreign, 0, "&Help", 700);
        QCOMPARE(texts(bar.actions().constFirst()->menu()->actions()),
                 (QStringList{"foreign", "own"}));
    }
};

ZAN_WIDGET_TEST_MAIN(TestOrderedMenus)
#include "tst_orderedmenus.moc"
