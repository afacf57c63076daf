#pragma once

#include <string>

/// Prints what a scene document holds and what became of the files that it names. Throws `Failure` when the document is
/// damaged, and after printing when something that it names isn't there.
void printSceneInfo(const std::string& path);
