#pragma once

#include "proof.h"

/// The graph of one family as an SVG element for an HTML page: on the left the classes of versions,
/// in the middle the releases that runs lead to, on the right where it ends; dead ends are red.
QString releaseGraph(const FamilyProof& family);

/// @p text for HTML and SVG; letters that cannot be shown become U+FFFD.
QString escaped(const QString& text);
