#pragma once

#include "testmain.h"

#include <QApplication>

/// The main() of a test with widgets; it needs no display.
#define ZAN_WIDGET_TEST_MAIN(Test)                                                                 \
    int main(int argc, char** argv)                                                                \
    {                                                                                              \
        return runTest<QApplication, Test>(argc, argv);                                            \
    }
