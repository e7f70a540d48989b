#pragma once

/// Gives the whole application the dark or the bright palette, in one style on every desktop.
void applyTheme(bool dark);
