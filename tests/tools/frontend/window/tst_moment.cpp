#include <moment.h>

#include <elsewhere.h>
#include <testmain.h>

class TestMoment : public QObject
{
    Q_OBJECT

private slots:
    void momentIsToldAsTheUserWritesIt_data()
    {
        QTest::addColumn<QByteArray>("language");
        QTest::addColumn<QString>("text");
        QTest::newRow("in English") << QByteArray("en_US") << "2:03:22 PM";
        QTest::newRow("in German") << QByteArray("de_DE") << "14:03:22";
        QTest::newRow("in Danish") << QByteArray("da_DK") << "14.03.22";
        QTest::newRow("with the zone in front") << QByteArray("zh_TW") << "下午2:03:22";
        QTest::newRow("with the zone in brackets") << QByteArray("es_ES") << "14:03:22";
        QTest::newRow("with words") << QByteArray("fr_CA") << "14 h 03 min 22 s";
        QTest::newRow("in Turkish") << QByteArray("tr_TR") << "14:03:22";
        QTest::newRow("in digits of their own") << QByteArray("ar_EG") << "٢:٠٣:٢٢ م";
    }

    void momentIsToldAsTheUserWritesIt()
    {
        QFETCH(const QByteArray, language);
        const Elsewhere elsewhere(language.constData(), "XXX-5:45");
        const QDateTime moment(QDate(2026, 3, 1), QTime(8, 18, 22), Qt::UTC);
        QTEST(momentText(moment, moment.addSecs(600)), "text");
    }

    void dateStandsBeforeTheTimeOfAnotherDay_data()
    {
        QTest::addColumn<QDateTime>("now");
        QTest::addColumn<QString>("text");
        // 23:45 local time of the first of March.
        const QDateTime moment(QDate(2026, 3, 1), QTime(18, 0, 0), Qt::UTC);
        QTest::newRow("the same day") << moment.addSecs(14 * 60) << "23:45:00";
        QTest::newRow("a quarter of an hour later")
            << moment.addSecs(15 * 60) << "01.03.26 23:45:00";
        QTest::newRow("a year later") << moment.addYears(1) << "01.03.26 23:45:00";
    }

    void dateStandsBeforeTheTimeOfAnotherDay()
    {
        QFETCH(const QDateTime, now);
        const Elsewhere elsewhere("de_DE", "XXX-5:45");
        QTEST(momentText(QDateTime(QDate(2026, 3, 1), QTime(18, 0, 0), Qt::UTC), now), "text");
    }
};

ZAN_TEST_MAIN(TestMoment)
#include "tst_moment.moc"
