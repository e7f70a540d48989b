#include "imagewords.h"

const EnumTexts<UpdateFileKind>& kindWords()
{
    static const EnumTexts<UpdateFileKind> words = {{UpdateFileKind::Controller, "controller"},
                                                    {UpdateFileKind::Camera, "camera"}};
    return words;
}

const EnumTexts<ImageLayout>& layoutWords()
{
    static const EnumTexts<ImageLayout> words = {{ImageLayout::Plain, "plain"},
                                                 {ImageLayout::Dated, "dated"}};
    return words;
}

const EnumTexts<int>& modelFamilyWords()
{
    static const EnumTexts<int> words = {{0, "ZAN"}, {briarscopeFamily, "BRIARSCOPE3"}};
    return words;
}

const EnumTexts<BlockType>& blockTypeWords()
{
    static const EnumTexts<BlockType> words = {{FirmwareBlock, "firmware"},
                                               {SystemBlock, "system"}};
    return words;
}

const EnumTexts<int>& preReleaseWords()
{
    static const EnumTexts<int> words = {{10, "alpha"}, {20, "beta"}, {30, "rc"}};
    return words;
}
