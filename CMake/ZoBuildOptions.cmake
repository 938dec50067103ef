# Warnings, sanitizers and coverage, on one private target that every target of this project links.
add_library(zo_build_options INTERFACE)

target_compile_options(zo_build_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
    -Wsuggest-override -Wold-style-cast -Wcast-qual -Wundef)
if(ZO_WARNINGS_AS_ERRORS)
    target_compile_options(zo_build_options INTERFACE -Werror)
endif()

# GCC 12 sees overlapping copies where a text is put in front of a temporary string (its bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(zo_build_options INTERFACE -Wno-restrict)
endif()

if(ZO_SANITIZE)
    target_compile_options(zo_build_options INTERFACE
        -fsanitize=${ZO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(zo_build_options INTERFACE -fsanitize=${ZO_SANITIZE})
endif()
if(ZO_BUILD_FUZZ)
    # In all libraries: a fuzzer steers by what it reaches in them.
    target_compile_options(zo_build_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(ZO_COVERAGE)
    target_compile_options(zo_build_options INTERFACE --coverage)
    target_link_options(zo_build_options INTERFACE --coverage)
endif()

# Calls inside one of our shared libraries go straight to their target, not through the table that would let another
# library replace it.
add_link_options($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,SHARED_LIBRARY>:-Wl,-Bsymbolic-functions>)

find_program(ZO_CCACHE ccache)
if(ZO_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${ZO_CCACHE})
endif()

# Declares the public headers of a floor: they are installed, and each is checked to compile alone.
#   zo_public_headers(target BASE dir HEADERS name...)
function(zo_public_headers target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "BASE" "HEADERS")
    list(TRANSFORM arg_HEADERS PREPEND ${arg_BASE}/)
    target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS ${arg_BASE} FILES ${arg_HEADERS})
endfunction()
