// An import's result as bytes, on their way from the process that read a strange file to the one that trusts nothing.
#pragma once

#include <string>

#include "interchange/import.h"

namespace pelt {

std::string import_bundle(const ImportResult& result);

// False for bytes that are no bundle, and for one that would have a file written under a name with a directory.
bool import_unbundle(const std::string& bytes, ImportResult* result);

}  // namespace pelt
