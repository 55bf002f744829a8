# Finds RxCpp: the target RxCpp::RxCpp serves `#include <rxcpp/rx.hpp>`, with its warnings counted as the system's.
#
# RxCpp's own package, where there is one, only says where to look: its target names the directory of rx.hpp
# itself, and its version is the same in all releases. RXCPP_INCLUDE_DIR may be set to a plain tree of headers.

find_package(rxcpp QUIET CONFIG)
set(hints ${CMAKE_PREFIX_PATH})
if(TARGET rxcpp)
    get_target_property(directories rxcpp INTERFACE_INCLUDE_DIRECTORIES)
    foreach(directory IN LISTS directories)
        list(APPEND hints "${directory}" "${directory}/..")
    endforeach()
endif()
find_path(RXCPP_INCLUDE_DIR rxcpp/rx.hpp HINTS ${hints} DOC "The directory that holds rxcpp/rx.hpp")
mark_as_advanced(RXCPP_INCLUDE_DIR)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(RxCpp REQUIRED_VARS RXCPP_INCLUDE_DIR)
if(RxCpp_FOUND AND NOT TARGET RxCpp::RxCpp)
    add_library(RxCpp::RxCpp INTERFACE IMPORTED)
    set_target_properties(RxCpp::RxCpp PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${RXCPP_INCLUDE_DIR}")
endif()
