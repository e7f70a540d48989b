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
        QStringLiteral(
            "  0  done\n"
            "  1  something cannot be read or written, whatever else is wrong\n"
            "  2  the command line is wrong\n"
            "  3  a description, a scenario, an update file, a delivery or a sealed folder\n"
            "     is wrong"),
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
