#pragma once

// The public corpus and the other tools' readings, for the tests that include
// them from here.

#include <gtest/gtest.h>

#include "tests/support/Corpus.h"
#include "tests/support/ExifTool.h"
