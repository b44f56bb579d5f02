// CMake needs a source to compile the precompiled header with.
