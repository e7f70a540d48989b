#pragma once

class QTableView;

/// Clicks on the box to tick of a cell that has one. With the mouse, as tables do not report a tick
/// by keyboard as a click.
void clickCheckBox(QTableView& table, int row, int column);
