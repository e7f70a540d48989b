#pragma once

/// @file
/// The 6-bit text encoding of binary records, described in docs/formats.md.

/// Writes @p length bytes of @p data as text of 6-bit words, two characters for each 12 bits, and
/// terminates it. @p text must hold ceil(8 * length / 6) characters and the terminator.
void encodeSixBit(char* text, const unsigned char* data, int length);

/// The 6-bit word that starts at the bit @p bitOffset, a multiple of 6; bits beyond the data are 0.
/// Any other offset gives 0.
unsigned char sixBitWord(const unsigned char* data, int length, int bitOffset);
