#pragma once

#include "proof.h"

#include <QByteArray>

/// The proof as one HTML page that needs no other file: the releases of each family as a graph,
/// from each class of versions to where it ends, the table behind it, and what was found. Texts of
/// files are shown as they are, whatever they hold. Safe to call from any thread.
QByteArray proofHtml(const Proof& proof);
