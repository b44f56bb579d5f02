# What every target of this project is compiled and linked with: zr_options.
add_library(zr_options INTERFACE)
target_compile_options(zr_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow
                       $<$<BOOL:${ZRKEY_WERROR}>:-Werror>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # g++ 12 takes the sum of a literal and a std::string for an overlapping copy.
  target_compile_options(zr_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()

# A release is the same in whatever folder it is built: paths of sources in it are relative to the root.
# When two of these match a path, the compiler uses the last one.
add_compile_options($<$<CONFIG:Release>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>
                    $<$<CONFIG:Release>:-ffile-prefix-map=${PROJECT_BINARY_DIR}=build>)

if(ZRKEY_SANITIZE)
  # -fsanitize=vptr takes the adapters, which are entered through the component part and adjusted
  # back to the object, for calls on an object of another type.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize=vptr -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined -fno-sanitize=vptr)
endif()

if(ZRKEY_SANITIZE_THREADS)
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
endif()

if(ZRKEY_BUILD_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(ZRKEY_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()

# Hardening, for everything that is linked into what is installed. _FORTIFY_SOURCE needs optimised
# code, and gets in the way of the sanitizers' own checks.
add_compile_options(-fstack-protector-strong)
add_compile_definitions($<$<COMPILE_LANGUAGE:CXX>:_GLIBCXX_ASSERTIONS>)
if(NOT ZRKEY_SANITIZE AND NOT ZRKEY_SANITIZE_THREADS)
  add_compile_options($<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=2>)
endif()
if(WIN32)
  # With -fipa-ra a caller keeps values in registers that the inline function it calls does not change.
  # g++ for Windows looks at the copy of the function in the same file, but the linker may choose the
  # copy of another file, compiled with other options, which changes them.
  add_compile_options(-fno-ipa-ra)
  add_link_options(LINKER:--dynamicbase,--high-entropy-va,--nxcompat
                   -fstack-protector-strong)  # with the library that reports an overrun
else()
  # For Windows every large frame is probed anyway, and g++ 12 fails on -fstack-clash-protection.
  add_compile_options(-fstack-clash-protection -fcf-protection)
  include(CheckPIESupported)
  check_pie_supported()
  add_link_options(LINKER:-z,relro,-z,now,-z,noexecstack)
endif()

if(WIN32)
  # No DLL outside Windows is needed: libstdc++, libgcc and winpthread are linked in.
  target_link_options(zr_options INTERFACE -static)
  # The files do not contain the time of the build.
  add_link_options(LINKER:--no-insert-timestamp)
endif()
