#pragma once

#include <VersionInfo>

#include <QVector>
#include <QtTest>

// What QCOMPARE shows of the project's values when they differ.

namespace QTest {

template <>
inline char* toString(const VersionInfo& t) // Qt's name for it
{
    return qstrdup(qPrintable(QStringLiteral("(%1,%2,%3)").arg(t.ma).arg(t.mi).arg(t.pa)));
}

} // namespace QTest

Q_DECLARE_METATYPE(VersionInfo)
