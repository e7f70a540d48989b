#pragma once

#include "patience.h"
#include "testenvironment.h"
#include "warningguard.h"

#include <QCoreApplication>
#include <QtTest>

#include <optional>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

/// The test class as Qt Test runs it: under the message handler that fails it on warnings.
template <typename Test>
class GuardedTest final : public Test
{
public:
    // Qt Test installs its own message handler after main() and before it asks for the slots, and
    // offers no place in between but this one.
    const QMetaObject* metaObject() const override
    {
        failOnUnexpectedWarnings();
        return Test::metaObject();
    }
};

template <typename Application>
void startApplication(std::optional<Application>* application, int& argc, char** argv)
{
#if defined(__SANITIZE_ADDRESS__)
    // The platform without a display never frees its screen.
    const __lsan::ScopedDisabler disabler;
#endif
    application->emplace(argc, argv);
}

/// Runs a test class in a home folder of its own. @return the number of failures
template <typename Application, typename Test>
int runTest(int argc, char** argv)
{
    const TestEnvironment environment;
    int failures = 0;
    {
        std::optional<Application> application;
        startApplication(&application, argc, argv);
        GuardedTest<Test> test;
        failures = QTest::qExec(&test, argc, argv);
        countWarnings();
    }
    return failures + countedWarnings();
}

/// The main() of a test without widgets. Its source file includes its own .moc at the end.
#define ZAN_TEST_MAIN(Test)                                                                        \
    int main(int argc, char** argv)                                                                \
    {                                                                                              \
        return runTest<QCoreApplication, Test>(argc, argv);                                        \
    }
