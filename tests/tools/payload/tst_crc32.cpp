#include "crc32.h"

#include <testmain.h>

class TestCrc32 : public QObject
{
    Q_OBJECT

private slots:
    void checksum_data();
    void checksum();
};

void TestCrc32::checksum_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<quint32>("expected");

    QTest::newRow("the check value of the algorithm") << QByteArray("123456789") << 0xCBF43926U;
    QTest::newRow("no bytes") << QByteArray() << 0U;
    QTest::newRow("one zero byte") << QByteArray(1, '\0') << 0xD202EF8DU;
    QTest::newRow("bytes with their top bit set") << QByteArray(4, '\xFF') << 0xFFFFFFFFU;
}

void TestCrc32::checksum()
{
    QFETCH(const QByteArray, data);
    QTEST(crc32(data), "expected");
}

ZAN_TEST_MAIN(TestCrc32)
#include "tst_crc32.moc"
