#pragma once

#include <QString>

/// The name by which a system and its other hosts know this one: user, machine and process, as in
/// "ann@console-3, process 4711". The same for as long as the process lives, in every language.
QString nameOfThisHost();
