# `make packages`: Debian packages of the installed tree's components.
set(components runtime development dropin)
set(built lumo lumo-lapack)
if(TARGET lumo-command)
    list(APPEND components tools)
    list(APPEND built lumo-command)
endif()
if(LUMO_HAVE_CUDA)
    list(APPEND components cuda)
    list(APPEND built lumo-cuda)
endif()

set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_CONTACT "Lumo developers <lumo@localhost>")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})  # of these packages' own
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

# lumo_package(component NAME SECTION lines of the description...)
function(lumo_package component name section)
    string(TOUPPER ${component} upper)
    list(JOIN ARGN "\n" text)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${text}" PARENT_SCOPE)
endfunction()
lumo_package(runtime liblumo0 libs
    "The shared library: linear systems, least squares, singular values and"
    "matrix products by a GPU, behind a C interface with LAPACK's conventions."
    "Without a GPU the CPU does the same work.")
lumo_package(development liblumo-dev libdevel
    "Headers, reference manual, and what CMake and pkg-config need to build"
    "programs with the library.")
lumo_package(dropin liblumo-lapack libs
    "The drop-in library: preloaded, it lets the library serve the BLAS and"
    "LAPACK calls of programs that were written without it.")
lumo_package(tools lumo-tools math
    "The lumo command: it solves systems that lie in Matrix Market or NumPy"
    "files, measures the library against the CPU LAPACK, and shows what it"
    "runs on.")
lumo_package(cuda liblumo-cuda libs
    "The plugin with which liblumo0 and lumo-tools run on a GPU. CUBLAS, of the"
    "CUDA toolkit that the plugin was built with, must be installed beside it.")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_DROPIN_DEPENDS runtime)
# For `lumo tune`, and pictures of `lumo svd` and `lumo bench`.
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS "liblumo-lapack")
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS "gnuplot-nox")
set(CPACK_DEBIAN_CUDA_PACKAGE_ENHANCES "liblumo0, lumo-tools")

# One configuration serves this and the bundle.
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/cpack_generator.cmake)
file(WRITE ${CPACK_PROJECT_CONFIG_FILE} "
if(CPACK_GENERATOR STREQUAL \"DEB\")
    set(CPACK_COMPONENTS_ALL ${components})
    set(CPACK_COMPONENTS_GROUPING IGNORE)
    set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY OFF)
    set(CPACK_DEB_COMPONENT_INSTALL ON)
    set(CPACK_OUTPUT_FILE_PREFIX ${PROJECT_BINARY_DIR}/debian)
endif()
")

if(TARGET manual)
    list(APPEND built manual)
endif()
add_custom_target(packages
    COMMAND ${CMAKE_COMMAND} -E rm -rf debian
    COMMAND ${CMAKE_CPACK_COMMAND} -G DEB
    DEPENDS ${built}
    USES_TERMINAL)
