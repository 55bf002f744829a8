# One subsystem of the library: an OBJECT library zelm_<name> that sees only the floors that it may include.
#
#   zelm_add_subsystem(<name> [FLOORS <lower>...] [LINK <target>...]
#                      SOURCES <file>... [KERNELS <file>...] HEADERS <file>...)
#
# FLOORS names the subsystems directly below. KERNELS are sources whose numeric loops are worth -O3.
# HEADERS are installed below <prefix>/include/zelm/<name>.

add_library(zelm_options INTERFACE)
target_compile_features(zelm_options INTERFACE cxx_std_17)
target_compile_options(zelm_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    $<$<BOOL:${ZELM_WARNINGS_AS_ERRORS}>:-Werror>)

# All floors that a subsystem stands on, itself included, lowest first.
function(zelm_floors_of out)
    set(all "")
    foreach(name IN LISTS ARGN)
        get_target_property(below zelm_${name} ZELM_FLOORS)
        if(below)
            zelm_floors_of(lower ${below})
            list(APPEND all ${lower})
        endif()
        list(APPEND all ${name})
    endforeach()
    list(REMOVE_DUPLICATES all)
    set(${out} "${all}" PARENT_SCOPE)
endfunction()

function(zelm_add_subsystem name)
    cmake_parse_arguments(arg "" "" "FLOORS;LINK;SOURCES;KERNELS;HEADERS" ${ARGN})
    add_library(zelm_${name} OBJECT ${arg_SOURCES} ${arg_KERNELS} ${arg_HEADERS})
    set_target_properties(zelm_${name} PROPERTIES
        ZELM_FLOORS "${arg_FLOORS}"
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON)
    target_include_directories(zelm_${name} PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>")
    # Contraction would change the last bit of conversions from machine to machine.
    target_compile_options(zelm_${name} PRIVATE -ffp-contract=off)
    target_link_libraries(zelm_${name} PRIVATE $<BUILD_INTERFACE:zelm_options> PUBLIC ${arg_LINK})
    if(arg_KERNELS)
        set_source_files_properties(${arg_KERNELS} PROPERTIES
            COMPILE_OPTIONS "$<$<CONFIG:Release,RelWithDebInfo>:-O3>")
    endif()
    foreach(header IN LISTS arg_HEADERS)
        install(FILES "${CMAKE_CURRENT_SOURCE_DIR}/${header}"
                DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/zelm/${name}" COMPONENT dev)
    endforeach()
    set_property(GLOBAL APPEND PROPERTY ZELM_SUBSYSTEMS ${name})
endfunction()

# Links <target> to the object files of the given subsystems and of all floors below them.
function(zelm_link_floors target)
    zelm_floors_of(floors ${ARGN})
    foreach(floor IN LISTS floors)
        target_link_libraries(${target} PRIVATE zelm_${floor})
    endforeach()
endfunction()
