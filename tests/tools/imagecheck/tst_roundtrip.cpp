#include "soundimages.h"

#include <commandline.h>
#include <fixturefiles.h>
#include <testmain.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <random>

/// Descriptions made at random, the same on every machine.
class RandomDescription
{
public:
    explicit RandomDescription(unsigned seed) : m_random(seed) {}

    QJsonObject controller();
    QJsonObject camera();

private:
    int number(int lowest, int highest)
    {
        return lowest + static_cast<int>(m_random() % static_cast<unsigned>(highest - lowest + 1));
    }
    QString version(int parts);
    QJsonObject content();
    QJsonArray records();

    std::mt19937 m_random;
};

QString RandomDescription::version(int parts)
{
    QStringList numbers;
    for (int part = 0; part < parts; ++part)
        numbers += QString::number(number(0, 3) == 0 ? 65535 : number(0, 20));
    return numbers.join('.');
}

QJsonArray RandomDescription::records()
{
    QJsonArray records;
    for (int count = number(1, 5); count > 0; --count) {
        QByteArray record;
        for (int size = number(0, maxRecordBytes); size > 0; --size)
            record.append(static_cast<char>(number(0, 255)));
        records.append(QString(record.toHex()));
    }
    return records;
}

QJsonObject RandomDescription::content()
{
    QJsonObject object;
    if (number(0, 1) == 0)
        object.insert("text", QString(number(1, 49), QChar(number(0x20, 0xFF))));
    if (number(0, 2) == 0) {
        object.insert("records", records());
        return object;
    }
    object.insert("recordLength", number(36, maxRecordBytes));
    object.insert("payload", QJsonObject{{"records", number(1, 9)}, {"seed", number(0, 99)}});
    return object;
}

QJsonObject RandomDescription::controller()
{
    const bool dated = number(0, 1) == 0;
    QJsonObject object{{"kind", "controller"},
                       {"layout", dated ? "dated" : "plain"},
                       {"modelFamily", number(0, 1) == 0 ? "ZAN" : "BRIARSCOPE3"},
                       {"release", version(3) + (number(0, 1) == 0 ? "-rc.7" : "")},
                       {"newPt", version(3)},
                       {"newCt", version(2)},
                       {"minPt", version(3)},
                       {"minCt", version(2)}};
    if (dated) {
        object.insert("releaseDate", "2025-02-30");
        object.insert("minorReleaseDate", QString("20%1-10-11").arg(number(10, 99)));
    }
    QJsonArray blocks;
    for (int count = number(0, 4); count > 0; --count) {
        QJsonObject block = content();
        const bool isFirmware = number(0, 1) == 0;
        block.insert("type", isFirmware ? "firmware" : "system");
        block.insert("minVersion", version(isFirmware ? 3 : 2));
        block.insert("maxVersion", version(isFirmware ? 3 : 2));
        if (!isFirmware && number(0, 3) == 0)
            block.insert("override", QJsonObject{{"type", 7}});
        blocks.append(block);
    }
    object.insert("blocks", blocks);
    object.insert("override", QJsonObject{{"reserved3", number(0, 65535)}});
    return object;
}

QJsonObject RandomDescription::camera()
{
    QJsonArray models;
    for (int count = number(0, 3); count > 0; --count)
        models.append(QString("0x0%1").arg(number(0x100, 0xFFF), 3, 16));
    QJsonArray images;
    for (int count = number(0, 3); count > 0; --count) {
        QJsonObject image = content();
        if (number(0, 1) == 0)
            image.insert("minVersion", version(3));
        images.append(image);
    }
    return {{"kind", "camera"},
            {"newVersion", version(3) + (number(0, 1) == 0 ? "-beta.2" : "")},
            {"minVersion", version(3)},
            {"models", models},
            {"images", images}};
}

class TestRoundTrip : public QObject
{
    Q_OBJECT

private slots:
    void showsWhatBuildsTheSameFile_data();
    void showsWhatBuildsTheSameFile();
    void extractsWhatWasBuiltIn();

private:
    QString run(const QStringList& arguments);
    QString build(const QString& description, const QString& output);

    const FixtureFolder m_folder;
};

namespace {

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
}

} // namespace

/// What the program prints on its standard output.
QString TestRoundTrip::run(const QStringList& arguments)
{
    QString out;
    QString messages;
    QTextStream outStream(&out);
    QTextStream messageStream(&messages);
    runVerb(imageTool(), arguments, {outStream, messageStream});
    return out;
}

// What is made at random breaks rules, too.
QString TestRoundTrip::build(const QString& description, const QString& output)
{
    QStringList arguments{"build", "--json", description, output};
    for (const RuleInfo& info : allRules())
        arguments << "--allow" << info.name;
    return run(arguments);
}

void TestRoundTrip::showsWhatBuildsTheSameFile_data()
{
    QTest::addColumn<QJsonObject>("description");

    for (unsigned seed = 0; seed < 60; ++seed) {
        QTest::addRow("controller image %u", seed) << RandomDescription(seed).controller();
        QTest::addRow("camera file %u", seed) << RandomDescription(seed).camera();
    }
}

void TestRoundTrip::showsWhatBuildsTheSameFile()
{
    QFETCH(const QJsonObject, description);
    const QString built = m_folder.path("built");
    const QString again = m_folder.path("again");
    const QString first =
        build(m_folder.write("first.json", QJsonDocument(description).toJson()), built);
    QVERIFY2(!first.contains("\"error\""), qPrintable(first));
    // A field for each error is in a description, but not for where blocks lie.
    const QString shown = run({"show", "--json", built});
    const QString second = build(m_folder.write("second.json", shown.toUtf8()), again);
    QVERIFY2(!second.contains("\"error\""), qPrintable(second + shown));
    QCOMPARE(contentOf(again).toHex(), contentOf(built).toHex());
    QFile::remove(built);
    QFile::remove(again);
}

void TestRoundTrip::extractsWhatWasBuiltIn()
{
    std::mt19937 random(12);
    for (const int size : {1, 39, 40, 41, 80, 100000}) {
        QByteArray content;
        for (int index = 0; index < size; ++index)
            content.append(static_cast<char>(random()));
        m_folder.write("fw.bin", content);
        const QString description = m_folder.write("with a blank/d.json", R"({
            "kind": "camera", "newVersion": "1.4.0", "minVersion": "1.0.0", "models": ["0x0901"],
            "images": [{"payload": {"records": 1}}, {"file": "../fw.bin", "recordLength": 40}]})");
        const QString image = m_folder.path("c.VX2znimg");
        const QString built = run({"build", "--json", description, image});
        QVERIFY2(!built.contains("\"error\""), qPrintable(built));
        QCOMPARE(run({"extract", image, "--block", "1", "-o", m_folder.path("out.bin")}),
                 QString());
        QVERIFY(contentOf(m_folder.path("out.bin")) == content);
    }
}

ZAN_TEST_MAIN(TestRoundTrip)
#include "tst_roundtrip.moc"
