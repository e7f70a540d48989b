#pragma once

/// The frontend's own version, as it stands in its title and goes to the modules.
constexpr char frontendVersion[] = "v3.3.0";
