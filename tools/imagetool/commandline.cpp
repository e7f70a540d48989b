#include "commandline.h"

#include "imagetoolverbs.h"

#include <proververbs.h>
#include <sealverbs.h>

const VerbProgram& imageTool()
{
    static const VerbProgram program{
        QStringLiteral("imagetool"),
        QStringLiteral(IMAGETOOL_VERSION),
        QStringLiteral("Makes controller update images and camera update files, and finds what is "
                       "wrong with\nthem before anyone receives them."),
        QStringLiteral("  0  done\n"
                       "  1  something cannot be read or written\n"
                       "  2  the command line is wrong\n"
                       "  3  a description, an update file or a sealed folder is wrong"),
        {
            buildVerb(),
            showVerb(),
            extractVerb(),
            checkVerb(),
            planVerb(),
            proveVerb(),
            sealVerb(),
            verifyVerb(),
        }};
    return program;
}
