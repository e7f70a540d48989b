"""Which tests a file of the product answers to, the quickest first."""

CONTRACT = ["tst_versioninfo", "tst_backendversions", "tst_iomanager", "tst_messagereceiver",
            "tst_moduleinterface", "tst_headernames"]
DIALOG = ["tst_updatetable", "tst_progress", "tst_camerareader", "tst_imagestreaming", "tst_camerarun",
          "tst_updaterun", "tst_preferences", "tst_dialogshell", "tst_preflight", "tst_controllerrun",
          "tst_completion", "tst_cameracompletion"]
OBJECT = ["tst_zanupdatemodule", "tst_zanupdatemessagereceiver", "tst_startup", "tst_preferencesituations",
          "tst_plugin", "tst_scale"]
INVENTORY = ["tst_zandisplay", "tst_zanmoduleserver", "tst_zandata", "tst_zancontroller",
             "tst_camupdatedata", "tst_updatetable"]
VIEWER = ["tst_newfeaturedialog", "tst_notediscovery", "tst_notespage"]

MODULE = "modules/ZanUpdateModule/SourceFiles/"

TESTS = {
    "libs/include/VersionInfo.h": ["tst_versioninfo", "tst_zandisplay"],
    "libs/include/BackendVersions.h": ["tst_backendversions"],
    "libs/include/IOManager.h": ["tst_iomanager", "iomanager_formats", "tst_headernames"],
    "libs/include/MessageReceiver.h": ["tst_messagereceiver", "tst_zanupdatemessagereceiver"],
    "libs/include/ModuleInterface.h": ["tst_moduleinterface", "tst_plugin", "tst_zanupdatemodule"],
    "modules/general/darktheme": ["tst_searchhardwaredlg", *VIEWER, "tst_dialogshell"],
    "modules/general/hostlog": ["tst_hostlog"],
    "modules/general/replybuffer": ["tst_replybuffer", "tst_zancontroller", "tst_searchhardwaredlg"],
    "modules/general/searchhardwaredlg": ["tst_searchhardwaredlg", "tst_cameracompletion"],
    MODULE + "beforeandafterrun": ["tst_preflight", "tst_completion", "tst_cameracompletion"],
    MODULE + "blockstream": ["tst_blockstream", "tst_imagestreaming", "tst_controllerrun"],
    MODULE + "cameraimagestream": ["tst_cameraimagestream", "tst_camerareader", "tst_camerarun"],
    MODULE + "filenames": ["tst_globaldefines", *INVENTORY],
    MODULE + "preferencesfile": ["tst_preferences", "tst_preferencesituations"],
    MODULE + "runestimate": ["tst_updateprogress", "tst_progress"],
    MODULE + "selectedrows": ["tst_updatetable", "tst_preflight", "tst_updaterun", "tst_progress"],
    MODULE + "updateprogress": ["tst_updateprogress", "tst_progress"],
    MODULE + "ZanController": ["tst_zancontroller", "tst_zanmoduleserver", "tst_zandisplay"],
    MODULE + "ZanData": ["tst_zandata", "tst_zandisplay", "tst_zanmoduleserver", "tst_imagestreaming"],
    MODULE + "ZanDisplay": ["tst_zandisplay", "tst_zanmoduleserver", "tst_updatetable",
                            "tst_controllerrun"],
    MODULE + "ZanUpdateModule2GSettingsdlg": DIALOG + ["tst_zanupdatemodule", "tst_interruptedrun"],
    MODULE + "camfilereader": ["tst_camfilereader", "tst_camupdatedata", "tst_camerareader",
                               "tst_camerarun"],
    MODULE + "camupdatedata": ["tst_camupdatedata", "tst_zandisplay", "tst_camerarun",
                               "tst_cameracompletion"],
    MODULE + "globaldefines": ["tst_globaldefines", *INVENTORY],
    MODULE + "imageblockreader": ["tst_imageblockreader", "tst_imagestreaming"],
    MODULE + "littleendianreader": ["tst_littleendianreader", "tst_zandata", "tst_camfilereader",
                                    "tst_imageblockreader"],
    MODULE + "newfeaturedialog": VIEWER + ["tst_zanupdatemodule", "tst_startup"],
    MODULE + "sixbitencoding": ["tst_sixbitencoding", "tst_imagestreaming"],
    MODULE + "supportedcontrollers": ["tst_zanmoduleserver", "tst_preflight", "tst_zanupdatemodule"],
    MODULE + "zanmoduleserver": ["tst_zanmoduleserver", "tst_updatetable", "tst_zanupdatemodule",
                                 "tst_startup", "tst_scale"],
    MODULE + "zanupdatemessagereceiver": ["tst_zanupdatemessagereceiver", "tst_dialogshell"],
    MODULE + "zanupdatemodule": OBJECT + ["tst_interruptedrun"],
}


def tests_of(file):
    """The tests of a file: by its name, or by its name without the ending for header and source."""
    return TESTS.get(file) or TESTS[file.rsplit(".", 1)[0]]
