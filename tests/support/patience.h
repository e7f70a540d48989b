#pragma once

#include <QtTest>

/// How long a test waits for anything, in milliseconds: longer than anything takes on the busiest
/// machine, so that only what hangs comes to its end, and shorter than Qt Test and ctest let it go
/// on (zan_run_test()), so that the test tells what it waited for. A busy machine may need the 5 s
/// that Qt's own macros wait, so they wait for as long, too.
inline constexpr int patienceMs = 240000;

#undef QTRY_VERIFY
#undef QTRY_VERIFY2
#undef QTRY_COMPARE
#define QTRY_VERIFY(condition) QTRY_VERIFY_WITH_TIMEOUT((condition), patienceMs)
#define QTRY_VERIFY2(condition, text) QTRY_VERIFY2_WITH_TIMEOUT((condition), text, patienceMs)
#define QTRY_COMPARE(actual, expected) QTRY_COMPARE_WITH_TIMEOUT((actual), expected, patienceMs)
