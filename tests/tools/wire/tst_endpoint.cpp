#include <endpoint.h>

#include <testmain.h>

class TestEndpoint : public QObject
{
    Q_OBJECT

private slots:
    void endpointIsRead_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("normal");
        QTest::newRow("address and port") << "127.0.0.1:4711"
                                          << "127.0.0.1:4711";
        QTest::newRow("port that is yet to be found") << "127.0.0.1:0"
                                                      << "127.0.0.1:0";
        QTest::newRow("greatest port") << "10.0.0.7:65535"
                                       << "10.0.0.7:65535";
        QTest::newRow("this machine") << "localhost:80"
                                      << "127.0.0.1:80";
        QTest::newRow("all addresses of this machine") << "0.0.0.0:80"
                                                       << "0.0.0.0:80";
        QTest::newRow("address with colons") << "[::1]:4711"
                                             << "[::1]:4711";
        QTest::newRow("address with colons, without brackets") << "::1:4711"
                                                               << "[::1]:4711";
    }

    void endpointIsRead()
    {
        QFETCH(const QString, text);
        const std::optional<Endpoint> endpoint = Endpoint::read(text);
        QVERIFY(endpoint);
        QTEST(endpoint->text(), "normal");
    }

    void otherTextIsNone_data()
    {
        QTest::addColumn<QString>("text");
        for (const char* text : {"", ":", "4711", ":4711", "127.0.0.1", "127.0.0.1:", "127.0.0.1:x",
                                 "127.0.0.1:65536", "127.0.0.1:-1", "127.0.0.256:1",
                                 "controller:4711", "127.0.0.1:1:2", "[]:1", "[::1]", "[::1:1"})
            QTest::newRow(*text ? text : "nothing") << text;
    }

    void otherTextIsNone()
    {
        QFETCH(const QString, text);
        QVERIFY(!Endpoint::read(text));
    }

    void untoldEndpointIsOfThisMachineAlone()
    {
        QVERIFY(Endpoint().address.isLoopback());
        QCOMPARE(Endpoint().text(), QString("127.0.0.1:0"));
    }
};

ZAN_TEST_MAIN(TestEndpoint)
#include "tst_endpoint.moc"
