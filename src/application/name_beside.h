// How one file is named from beside another.
#pragma once

#include <string>

namespace pelt {

// The path of a file as it is found from the directory of another one, which need not be there yet. Empty where no way
// leads from one to the other, as between two drives.
std::string name_beside(const std::string& other, const std::string& file);

// Whether both lie in one directory, whatever words lead to it.
bool lie_together(const std::string& file, const std::string& other);

// The name of a model's file as the line of a child says it, without its extension; empty where it has another.
std::string child_name_of(const std::string& name);

}  // namespace pelt
