# Warning and sanitizer flags shared by every target of the project.
#
# VLIPTC_SANITIZE builds everything with ASan + UBSan, and any report ends the
# program (no recovery), so a test that trips one fails. Built with clang, the
# same build also makes the fuzz targets real libFuzzer binaries (see
# fuzz/CMakeLists.txt): one build serves CTest and scripts/fuzz.sh.
# VLIPTC_LIBFUZZER is the lean fuzz-only build: the core and the libFuzzer
# targets, without the Qt side.
set(VLIPTC_SANITIZER_FLAGS "")
set(VLIPTC_SANITIZER_TEST_PROPERTIES "")
if(VLIPTC_SANITIZE OR VLIPTC_LIBFUZZER)
  set(VLIPTC_SANITIZER_FLAGS -fsanitize=address,undefined -fno-sanitize-recover=all)
  add_compile_options(${VLIPTC_SANITIZER_FLAGS} -fno-omit-frame-pointer)
  add_link_options(${VLIPTC_SANITIZER_FLAGS})
  # What CTest hands the sanitized tests, as test properties (one property per
  # variable, since a property value cannot hold a list here): the leaks of
  # uninstrumented third-party libraries (Qt, fontconfig) that LeakSanitizer
  # leaves out, never our own code; and a stack for every UBSan report.
  set(VLIPTC_SANITIZER_TEST_PROPERTIES
    ENVIRONMENT "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/sanitizer/lsan.supp:print_suppressions=0"
    ENVIRONMENT_MODIFICATION "UBSAN_OPTIONS=set:print_stacktrace=1")
endif()
if(VLIPTC_LIBFUZZER OR (VLIPTC_SANITIZE AND CMAKE_CXX_COMPILER_ID MATCHES "Clang"))
  set(VLIPTC_FUZZ_WITH_LIBFUZZER ON)
else()
  set(VLIPTC_FUZZ_WITH_LIBFUZZER OFF)
endif()

function(vliptc_set_warnings target)
  if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
    if(VLIPTC_WERROR)
      target_compile_options(${target} PRIVATE -Werror)
    endif()
  endif()
  # A program that links a sanitized library needs the sanitizer runtimes too,
  # also when it finds the library through find_package(vliptc).
  get_target_property(type ${target} TYPE)
  if(VLIPTC_SANITIZER_FLAGS AND type MATCHES "_LIBRARY$")
    target_link_options(${target} INTERFACE ${VLIPTC_SANITIZER_FLAGS})
  endif()
endfunction()
