#pragma once

#include "verb.h"

/// The options that every verb has beside its own.
QVector<QCommandLineOption> commonVerbOptions();

/// The text of `PROGRAM --help`.
QString programHelp(const VerbProgram& program);

/// The text of `PROGRAM VERB --help`.
QString verbHelp(const VerbProgram& program, const Verb& verb);

/// The text of `PROGRAM --help-all`, from which the manual page is made.
QString manualText(const VerbProgram& program);
