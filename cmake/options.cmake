# How our own targets are compiled. Nothing in here reaches a target that links to the library.

set(wqdata_warnings
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wdouble-promotion -Wshadow
  -Wold-style-cast -Wcast-align -Wcast-qual -Wnon-virtual-dtor -Wundef -Wformat=2
  -Wno-format-nonliteral -Wimplicit-fallthrough -Wextra-semi
)
# GCC 12 sees overlaps in its own std::string that are none, hence no -Wrestrict.
set(wqdata_gnu_warnings -Wduplicated-cond -Wduplicated-branches -Wlogical-op -Wno-restrict)

# Applies the language level, the warnings and the hidden visibility to a target of ours. Whether
# warnings stop the build is our option alone: an embedder's CMAKE_COMPILE_WARNING_AS_ERROR is for
# the embedder's code.
function(wqdata_compile_options target)
  target_compile_features(${target} PRIVATE cxx_std_20)
  target_compile_options(${target} PRIVATE
    $<$<CXX_COMPILER_ID:GNU,Clang,AppleClang>:${wqdata_warnings}>
    $<$<CXX_COMPILER_ID:GNU>:${wqdata_gnu_warnings}>
  )
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    COMPILE_WARNING_AS_ERROR ${WQDATA_WARNINGS_AS_ERRORS}
  )
endfunction()

# The time zone of everything that the tests run: one that is not UTC, and has daylight time.
set(wqdata_test_environment TZ=America/New_York)
