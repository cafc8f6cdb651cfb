// The version of the library; CMake reads it from here.
#pragma once

#define TESSARN_VERSION_MAJOR 1
#define TESSARN_VERSION_MINOR 0
#define TESSARN_VERSION_PATCH 0
