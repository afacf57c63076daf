#pragma once

#include "velmarapi.h"

#include <string>
#include <vector>

namespace TestSupport {

/// A scene of the host's with a node of each class that the exports make.
VelmarScene* makeExampleScene();

/// What the fake library records from the creation of a renderer on to the end of its walk over that scene.
std::vector<std::string> expectedRecordOfExampleScene();

} // namespace TestSupport
