#pragma once
// Finds the reason why nothing can be stored at a path.

#include "qrv/core/cobj.h"

#include <optional>
#include <string>

struct cObstacle {
    std::string text;   // "a is an int, which has no entries"
    std::string advice; // what to do, or empty
};

// The obstacle below `root`: a level without entries, a key that its container does not accept, or
// a declared type that requires values of another type. Empty without an obstacle.
std::optional<cObstacle> obstacle_at(objref const &root, std::string const &path);
