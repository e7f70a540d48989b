#include "headernames.h"
#include "testmain.h"

class TestHeaderNames : public QObject
{
    Q_OBJECT

private slots:
    void bothSpellingsGiveTheSameContract();
};

void TestHeaderNames::bothSpellingsGiveTheSameContract()
{
    QVERIFY(sizesByBareNames() == sizesBySuffixedNames());
}

ZAN_TEST_MAIN(TestHeaderNames)

#include "tst_headernames.moc"
