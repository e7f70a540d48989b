#pragma once

#include <array>
#include <cstddef>

/// Sizes of all types of the contract, as one way to include it gives them.
using ContractSizes = std::array<std::size_t, 6>;

ContractSizes sizesByBareNames();
ContractSizes sizesBySuffixedNames();
