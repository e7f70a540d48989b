#pragma once

#include "plan.h"

class Inventory;

/// @file
/// Why an update file gives no row. That it gives none is the inventory's word; what is told here
/// are the rules behind it, rule by rule in their order.

/// The files of @p delivery without a row in @p inventory, after it was refreshed on the system of
/// @p scenario. Where a file gives no controller a row, for one reason, it stands there once.
QVector<FileWithoutRow> filesWithoutRow(const DeliveredFiles& delivery, Inventory& inventory,
                                        const Scenario& scenario);
