#pragma once

#include <newfeaturedialog.h>
#include <privateaccess.h>

/// @file
/// The private members of the viewer that the tests call and look at, each under its own name.

ZAN_EXPOSE(vornix2, &NewFeatureDialog::vornix2);
ZAN_EXPOSE(search_dir, &NewFeatureDialog::search_dir);
ZAN_EXPOSE(sortAccordingVersions, &NewFeatureDialog::sortAccordingVersions);
ZAN_EXPOSE(qtSort, &NewFeatureDialog::qtSort);
ZAN_EXPOSE(is_version_available, &NewFeatureDialog::is_version_available);
ZAN_EXPOSE(load_html, &NewFeatureDialog::load_html);

ZAN_EXPOSE(majorOf, &Versions::major);
ZAN_EXPOSE(minorOf, &Versions::minor);
ZAN_EXPOSE(patchOf, &Versions::patch);
