# The target zelm_rxcpp serves `#include <rxcpp/rx.hpp>`: from an installed RxCpp, or from the stand-in in compat/.
# The installed library hands the same one on to its users.

set(ZELM_SYSTEM_RXCPP AUTO CACHE STRING "Use an installed RxCpp: ON, OFF, or AUTO for where there is one")
set_property(CACHE ZELM_SYSTEM_RXCPP PROPERTY STRINGS AUTO ON OFF)

if(ZELM_SYSTEM_RXCPP STREQUAL "AUTO")
    find_package(RxCpp QUIET)
elseif(ZELM_SYSTEM_RXCPP)
    find_package(RxCpp REQUIRED)
else()
    set(RxCpp_FOUND FALSE)
endif()

add_library(zelm_rxcpp INTERFACE)
set_target_properties(zelm_rxcpp PROPERTIES EXPORT_NAME RxCpp)
if(RxCpp_FOUND)
    message(STATUS "RxCpp: ${RXCPP_INCLUDE_DIR}")
    target_link_libraries(zelm_rxcpp INTERFACE RxCpp::RxCpp)
    install(FILES "${CMAKE_CURRENT_LIST_DIR}/FindRxCpp.cmake"
            DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/ZelmFoundation" COMPONENT dev)
    # What pkg-config says; the compiler's own directories must not be named again.
    if(NOT RXCPP_INCLUDE_DIR IN_LIST CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES)
        set(ZELM_RXCPP_CFLAGS "-isystem ${RXCPP_INCLUDE_DIR}")
    endif()
else()
    message(STATUS "RxCpp: the stand-in")
    target_include_directories(zelm_rxcpp INTERFACE
        "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/compat>"
        "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/zelm/compat>")
    install(FILES "${PROJECT_SOURCE_DIR}/compat/rxcpp/rx.hpp"
            DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/zelm/compat/rxcpp" COMPONENT dev)
    set(ZELM_RXCPP_CFLAGS "-I\${includedir}/zelm/compat")
endif()
install(TARGETS zelm_rxcpp EXPORT ZelmFoundationTargets)
