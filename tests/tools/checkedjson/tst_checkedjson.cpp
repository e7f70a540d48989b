#include "checkedjson.h"

#include <reasons.h>
#include <testmain.h>

class TestCheckedJson : public QObject
{
    Q_OBJECT

private slots:
    void refusesWhatIsNoObject_data();
    void refusesWhatIsNoObject();
    void readsEveryKindOfValue();
    void absentValuesHaveFallbacks();
    void namesTheFirstError_data();
    void namesTheFirstError();
    void goesOnHarmlesslyAfterAnError();
    void breaksNoLineForTheFilesName();
    void textsOfAnEnumerationAreFoundBothWays();
};

void TestCheckedJson::refusesWhatIsNoObject_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("error");

    QTest::newRow("no bytes") << QByteArray("") << "f.json: line 1: " + jsonReason("");
    QTest::newRow("an error in the third line")
        << QByteArray("{\n\"a\": 1,\n\"b\" 2\n}")
        << "f.json: line 3: " + jsonReason("{\n\"a\": 1,\n\"b\" 2\n}");
    QTest::newRow("an object that does not end")
        << QByteArray("{\n") << "f.json: line 2: " + jsonReason("{\n");
    QTest::newRow("a list") << QByteArray("[1]") << "f.json: line 1: must be an object";
}

void TestCheckedJson::refusesWhatIsNoObject()
{
    QFETCH(const QByteArray, json);
    QString error;
    QVERIFY(!parseJsonObject(json, QStringLiteral("f.json"), &error));
    QTEST(error, "error");
}

namespace {

QJsonObject parse(const QByteArray& json)
{
    QString error;
    const auto object = parseJsonObject(json, QStringLiteral("f.json"), &error);
    return object.value_or(QJsonObject());
}

} // namespace

void TestCheckedJson::readsEveryKindOfValue()
{
    QString error;
    CheckedObject root(parse(R"({
        "text": "t", "number": -3, "flag": true, "choice": "b", "object": {"inner": 7},
        "list": [{"n": 1}, {"n": 2}], "texts": ["x", "y"]})"),
                       QStringLiteral("f.json"), &error);

    QCOMPARE(root.text("text"), QStringLiteral("t"));
    QCOMPARE(root.number("number", -3, 5), qint64(-3));
    QCOMPARE(root.flag("flag", false), true);
    QCOMPARE(root.choice("choice", {"a", "b"}), 1);
    QCOMPARE(root.object("object").number("inner", 0, 7), qint64(7));
    QVector<CheckedObject> list = root.objects("list");
    QCOMPARE(list.size(), 2);
    QCOMPARE(list[1].number("n", 0, 9), qint64(2));
    QCOMPARE(root.texts("texts"), (QStringList{"x", "y"}));
    root.finish();
    QCOMPARE(error, QString());
    QVERIFY(root.ok());
}

void TestCheckedJson::absentValuesHaveFallbacks()
{
    QString error;
    CheckedObject root(QJsonObject(), QStringLiteral("f.json"), &error);

    QVERIFY(!root.contains("text"));
    QCOMPARE(root.text("text", "fallback"), QStringLiteral("fallback"));
    QCOMPARE(root.number("number", 0, 5, -1), qint64(-1));
    QCOMPARE(root.flag("flag", true), true);
    QCOMPARE(root.choice("choice", {"a", "b"}, 1), 1);
    CheckedObject nested = root.objectOrEmpty("object");
    QCOMPARE(nested.number("inner", 0, 5, 2), qint64(2));
    nested.finish();
    root.finish();
    QCOMPARE(error, QString());
}

namespace {

// Reads the one schema that the rows below depart from.
QString errorOf(const QByteArray& json)
{
    QString error;
    CheckedObject root(parse(json), QStringLiteral("f.json"), &error);
    root.text("text", QString());
    root.number("number", 1, 10, 1);
    root.flag("flag", false);
    root.choice("choice", {"a", "b"}, 0);
    CheckedObject object = root.objectOrEmpty("object");
    object.text("inner", QString());
    object.finish();
    if (root.contains("list")) {
        for (CheckedObject& element : root.objects("list")) {
            element.text("name");
            element.finish();
        }
    }
    if (root.contains("texts") && root.texts("texts").contains("bad"))
        root.fail("texts[1]", "must not be bad");
    root.finish();
    return error;
}

} // namespace

void TestCheckedJson::namesTheFirstError_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("error");

    const auto row = [](const char* name, const char* json, const char* error) {
        QTest::newRow(name) << QByteArray(json) << QString(error);
    };
    row("nothing wrong", R"({"text": "t", "number": 10})", "");
    row("a text that is a number", R"({"text": 1})", "f.json: text: must be a text");
    row("a text that is null", R"({"text": null})", "f.json: text: must be a text");
    row("a number that is a text", R"({"number": "1"})",
        "f.json: number: must be a whole number from 1 to 10");
    row("a number below its range", R"({"number": 0})",
        "f.json: number: must be a whole number from 1 to 10");
    row("a number above its range", R"({"number": 11})",
        "f.json: number: must be a whole number from 1 to 10");
    row("a number far above its range", R"({"number": 1e300})",
        "f.json: number: must be a whole number from 1 to 10");
    row("a broken number", R"({"number": 1.5})",
        "f.json: number: must be a whole number from 1 to 10");
    row("a flag that is a number", R"({"flag": 1})", "f.json: flag: must be true or false");
    row("a choice that is none", R"({"choice": "c"})",
        "f.json: choice: must be one of \"a\", \"b\"");
    row("a choice in other letters", R"({"choice": "A"})",
        "f.json: choice: must be one of \"a\", \"b\"");
    row("a choice that is a number", R"({"choice": 0})",
        "f.json: choice: must be one of \"a\", \"b\"");
    row("an object that is a list", R"({"object": []})", "f.json: object: must be an object");
    row("a wrong value in an object", R"({"object": {"inner": 1}})",
        "f.json: object.inner: must be a text");
    row("an unknown key in an object", R"({"object": {"iner": "x"}})",
        "f.json: object.iner: unknown key");
    row("a list that is an object", R"({"list": {}})", "f.json: list: must be a list");
    row("a list of numbers", R"({"list": [1]})", "f.json: list[0]: must be an object");
    row("a missing key in a list", R"({"list": [{"name": "x"}, {}]})",
        "f.json: list[1].name: missing");
    row("a number among texts", R"({"texts": ["x", 1]})", "f.json: texts[1]: must be a text");
    row("what only the caller can find", R"({"texts": ["x", "bad"]})",
        "f.json: texts[1]: must not be bad");
    row("an unknown key", R"({"txt": "t"})", "f.json: txt: unknown key");
    row("an unknown key of two lines", R"({"a\nb": 1})", R"(f.json: a\nb: unknown key)");
    row("an unknown key with every break of a line", R"({"a\r\u000b\u000c\u0085\u2028\u2029b": 1})",
        R"(f.json: a\r\u000b\u000c\u0085\u2028\u2029b: unknown key)");
    row("an unknown key that would colour the terminal", R"({"\u001b[31mred": 1})",
        R"(f.json: \u001b[31mred: unknown key)");
    row("an unknown key that would turn the text", R"({"\u202etxt": 1})",
        R"(f.json: \u202etxt: unknown key)");
    row("an unknown key in other letters", R"({"größe €": 1})", "f.json: größe €: unknown key");
    row("an unknown key in an object, with a break", R"({"object": {"in\ner": 1}})",
        R"(f.json: object.in\ner: unknown key)");
    row("the first of two errors", R"({"number": 0, "text": 1})", "f.json: text: must be a text");
}

void TestCheckedJson::namesTheFirstError()
{
    QFETCH(const QByteArray, json);
    QTEST(errorOf(json), "error");
}

void TestCheckedJson::goesOnHarmlesslyAfterAnError()
{
    QString error;
    CheckedObject root(QJsonObject(), QStringLiteral("f.json"), &error);
    QCOMPARE(root.text("text"), QString());
    QVERIFY(!root.ok());
    QCOMPARE(root.number("number", 4, 9), qint64(4));
    QCOMPARE(root.choice("choice", {"a", "b"}), 0);
    QCOMPARE(root.object("object").object("inner").text("x"), QString());
    QVERIFY(root.objects("list").isEmpty());
    QVERIFY(root.texts("texts").isEmpty());
    QCOMPARE(error, QStringLiteral("f.json: text: missing"));
}

void TestCheckedJson::breaksNoLineForTheFilesName()
{
    QString error;
    QVERIFY(!parseJsonObject("{", QStringLiteral("a\nb.json"), &error));
    QCOMPARE(error, QStringLiteral("a\\nb.json: line 1: unterminated object"));
    QVERIFY(!parseJsonObject("[]", QStringLiteral("a\nb.json"), &error));
    QCOMPARE(error, QStringLiteral("a\\nb.json: line 1: must be an object"));
    error.clear();
    CheckedObject root(QJsonObject(), QStringLiteral("a\nb.json"), &error);
    root.text("text");
    QCOMPARE(error, QStringLiteral("a\\nb.json: text: missing"));
}

void TestCheckedJson::textsOfAnEnumerationAreFoundBothWays()
{
    const EnumTexts<int> texts = {{10, "ten"}, {20, "twenty"}};
    QCOMPARE(texts.of(20), QString("twenty"));
    QCOMPARE(texts.valueOf("twenty"), std::make_optional(20));
    QVERIFY(!texts.valueOf("Twenty"));
    QVERIFY(texts.contains(10));
    QVERIFY(!texts.contains(15));
    QCOMPARE(texts.all(), (QStringList{"ten", "twenty"}));
}

ZAN_TEST_MAIN(TestCheckedJson)
#include "tst_checkedjson.moc"
