#pragma once

#include <QStringList>

class Equipment;
class ReleaseCatalogue;

/// One line for each device of @p equipment that does not run the newest versions that there are
/// for its model, or was not found again. A controller that is not available is left out.
/// @param delivered as ReleaseCatalogue::readAll() gives it
QStringList devicesBehind(const ReleaseCatalogue& delivered, const Equipment& equipment);
