#pragma once

#include <VersionInfo>

#include <QVector>
#include <QtTest>

// What QCOMPARE shows of the project's values when they differ.

namespace QTest {

template <>
inline char* toString(const VersionInfo& version)
{
    return qstrdup(
        qPrintable(QStringLiteral("(%1,%2,%3)").arg(version.ma).arg(version.mi).arg(version.pa)));
}

} // namespace QTest

Q_DECLARE_METATYPE(VersionInfo)
