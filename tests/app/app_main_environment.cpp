// Registers the offscreen QApplication before any test runs.
#include "app_support.h"

namespace {
const ::testing::Environment* const kQt = ::testing::AddGlobalTestEnvironment(new kestrelon::test::QtEnvironment);
}
