#pragma once

#include "updatefile.h"

#include <enumtexts.h>

/// @file
/// What the values of the formats' fields are called in descriptions and listings. All functions
/// are safe to call from any thread.

/// The two kinds of update files, in the order of UpdateFile's alternatives.
enum class UpdateFileKind
{
    Controller,
    Camera,
};

/// "controller" or "camera".
const EnumTexts<UpdateFileKind>& kindWords();

/// "plain" or "dated".
const EnumTexts<ImageLayout>& layoutWords();

/// The names of the model families, by their numbers.
const EnumTexts<int>& modelFamilyWords();

/// "firmware" or "system"; other types of a block have none.
const EnumTexts<BlockType>& blockTypeWords();

/// What stands for a type of pre-release in the text of a release: "alpha", "beta" or "rc"; other
/// types have none.
const EnumTexts<int>& preReleaseWords();
