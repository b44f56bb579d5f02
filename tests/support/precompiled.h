// The headers that most tests include and that take longest to compile. A test includes what it uses
// all the same.
#pragma once

#include <gtest/gtest.h>
#include <zrkey/zrkey.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>
