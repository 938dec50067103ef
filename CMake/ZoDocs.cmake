# Target docs: the reference of the installed headers as HTML in the build folder. Nothing else depends on it.
# A public declaration without a comment, and whatever else Doxygen warns about, fails the target.
find_package(Doxygen QUIET)
if(NOT DOXYGEN_FOUND)
    add_custom_target(docs
        COMMAND ${CMAKE_COMMAND} -E echo "The target docs needs the package doxygen."
        COMMAND ${CMAKE_COMMAND} -E false
        VERBATIM)
    return()
endif()

set(DOXYGEN_PROJECT_NAME ZoSoftwarePlatform)
set(DOXYGEN_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/docs)
set(DOXYGEN_STRIP_FROM_PATH ${CMAKE_SOURCE_DIR})
set(DOXYGEN_QUIET YES)
set(DOXYGEN_GENERATE_LATEX NO)
set(DOXYGEN_HAVE_DOT NO)

# The first sentence of a comment is the summary; an override without a comment has that of its base.
set(DOXYGEN_JAVADOC_AUTOBRIEF YES)
set(DOXYGEN_INHERIT_DOCS YES)
set(DOXYGEN_BUILTIN_STL_SUPPORT YES)
set(DOXYGEN_SORT_MEMBER_DOCS NO)

# Results and parameters are described where they say more than their names do.
set(DOXYGEN_WARN_IF_UNDOCUMENTED YES)
set(DOXYGEN_WARN_IF_DOC_ERROR YES)
set(DOXYGEN_WARN_IF_INCOMPLETE_DOC NO)
set(DOXYGEN_WARN_NO_PARAMDOC NO)
set(DOXYGEN_WARN_AS_ERROR FAIL_ON_WARNINGS)

# Copying, moving, destruction and identifiers of interfaces are described once, in the filter.
set(DOXYGEN_INPUT_FILTER "awk -f ${CMAKE_SOURCE_DIR}/CMake/DocumentedHeader.awk")

# Macros that mean nothing to a reader of declarations.
set(DOXYGEN_MACRO_EXPANSION YES)
set(DOXYGEN_EXPAND_ONLY_PREDEF YES)
set(DOXYGEN_PREDEFINED
    __clang__=0
    "ZO_EXPORT="
    "ZO_CAPABILITY(x)="
    "ZO_SCOPED_CAPABILITY="
    "ZO_GUARDED_BY(x)="
    "ZO_PT_GUARDED_BY(x)="
    "ZO_REQUIRES(x)="
    "ZO_EXCLUDES(x)="
    "ZO_ACQUIRE(x)="
    "ZO_RELEASE(x)="
    "ZO_TRY_ACQUIRE(x)="
    "ZO_NO_THREAD_SAFETY_ANALYSIS="
    "__attribute__(x)=")

set(zo_documented_headers ${CMAKE_SOURCE_DIR}/Inc/ZoStringQt.h)
foreach(target IN ITEMS zoplatform zocomponentshell zosoftwareplatformembedded)
    get_target_property(headers ${target} HEADER_SET)
    list(APPEND zo_documented_headers ${headers})
endforeach()
doxygen_add_docs(docs ${zo_documented_headers} COMMENT "Documenting the installed headers in docs/html")
