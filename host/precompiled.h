// The headers that most of the command's files include and that take longest to compile. A file
// includes what it uses all the same.
#pragma once

#include <zrkey/zrkey.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>
