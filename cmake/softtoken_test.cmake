# zr_add_token_test(NAME SOURCES file... LIBS library... [AROUND script [ARGUMENT...]])
#
# A GoogleTest executable that runs with a fresh SoftHSM2 token of its own, so that tests may run
# side by side. The test finds in its environment:
#   ZRKEY_TEST_MODULE   the Cryptoki module: SoftHSM2, on Windows the bridge to it;
#   ZRKEY_TOKEN_FOLDER  the token's folder, with key and certificate as files;
#   SOFTHSM2_CONF       what SoftHSM2 reads, through the bridge too.
# AROUND is a script that gets its arguments, then the test's command, and runs it.
find_file(ZR_SOFTHSM_MODULE libsofthsm2.so
          PATHS /usr/lib/softhsm /usr/lib/x86_64-linux-gnu/softhsm REQUIRED
          NO_CMAKE_FIND_ROOT_PATH)

function(zr_add_token_test name)
  cmake_parse_arguments(arg "" "" "SOURCES;LIBS;AROUND" ${ARGN})
  zr_add_test_program(${name} SOURCES ${arg_SOURCES} LIBS ${arg_LIBS})
  if(WIN32)
    add_dependencies(${name} pkcs11bridge)
  endif()
  zr_run_on_token(${name} ${name} MODULE ${ZR_SOFTHSM_MODULE} AROUND ${arg_AROUND})
endfunction()

# zr_run_on_token(NAME TARGET MODULE file [AROUND script [ARGUMENT...]] [ENVIRONMENT NAME=value...])
#
# One run of a test executable on a token of its own, through a native module.
function(zr_run_on_token name target)
  cmake_parse_arguments(arg "" "MODULE" "AROUND;ENVIRONMENT" ${ARGN})
  add_test(NAME ${name}
           COMMAND ${PROJECT_SOURCE_DIR}/scripts/with-softtoken
                   ${CMAKE_CURRENT_BINARY_DIR}/${name}_token
                   ${arg_AROUND} ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:${target}>)
  set(module ZRKEY_TEST_MODULE=${arg_MODULE})
  if(WIN32)
    # The bridge is named by its Linux path: under Wine the current drive is the one that holds it.
    set(module ZRKEY_TEST_MODULE=$<TARGET_PROPERTY:pkcs11bridge,ZR_FILE>
               ZRKEY_BRIDGE_MODULE=${arg_MODULE})
    set_tests_properties(${name} PROPERTIES FIXTURES_REQUIRED wine)
  endif()
  set_tests_properties(${name} PROPERTIES TIMEOUT 300 LABELS quick
                       ENVIRONMENT "${module};${arg_ENVIRONMENT}")
endfunction()
