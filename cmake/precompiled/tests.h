// The same for tests.
#include "tasks.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
