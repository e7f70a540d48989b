#include <BackendVersions>

#include "comparing.h"
#include "testmain.h"

#include <QVariant>

#include <type_traits>

class TestBackendVersions : public QObject
{
    Q_OBJECT

private slots:
    void takesItsFieldsInTheirOrder();
    void answersByReference();
    void travelsInAVariantUnderItsPointerName();
};

static BackendVersions sample()
{
    return BackendVersions(VersionInfo(3, 1, 4), VersionInfo(1, 23), VersionInfo(1, 2),
                           QStringLiteral("BRIARSCOPE3"));
}

void TestBackendVersions::takesItsFieldsInTheirOrder()
{
    const BackendVersions versions = sample();
    QCOMPARE(versions.systemPt(), VersionInfo(3, 1, 4));
    QCOMPARE(versions.protocol(), VersionInfo(1, 23));
    QCOMPARE(versions.systemCt(), VersionInfo(1, 2));
    QCOMPARE(versions.zanModel(), QStringLiteral("BRIARSCOPE3"));
}

void TestBackendVersions::answersByReference()
{
    BackendVersions versions = sample();
    // References to constants, also of a record that is none itself.
    static_assert(std::is_same_v<decltype(versions.systemPt()), const VersionInfo&>);
    static_assert(std::is_same_v<decltype(versions.protocol()), const VersionInfo&>);
    static_assert(std::is_same_v<decltype(versions.systemCt()), const VersionInfo&>);
    static_assert(std::is_same_v<decltype(versions.zanModel()), const QString&>);
    const char* start = reinterpret_cast<const char*>(&versions);
    const auto offsetOf = [start](const auto& field) {
        return reinterpret_cast<const char*>(&field) - start;
    };
    QCOMPARE(int(offsetOf(versions.systemPt())), 0);
    QCOMPARE(int(offsetOf(versions.protocol())), 12);
    QCOMPARE(int(offsetOf(versions.systemCt())), 24);
    QVERIFY(offsetOf(versions.zanModel()) >= 36);
    QVERIFY(offsetOf(versions.zanModel()) < int(sizeof versions));
}

void TestBackendVersions::travelsInAVariantUnderItsPointerName()
{
    BackendVersions versions = sample();
    const QVariant variant = QVariant::fromValue(&versions);
    QCOMPARE(variant.typeName(), "BackendVersions*");
    QCOMPARE(QMetaType::type("BackendVersions*"), qMetaTypeId<BackendVersions*>());
    QCOMPARE(variant.value<BackendVersions*>(), &versions);
    QCOMPARE(QVariant(QStringLiteral("text")).value<BackendVersions*>(), nullptr);
}

ZAN_TEST_MAIN(TestBackendVersions)

#include "tst_backendversions.moc"
