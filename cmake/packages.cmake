# `make packages`: Debian packages of the installed tree's components.
set(components runtime development dropin)
set(built lumo lumo-lapack manual debian-notes)
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
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})  # of these packages' own
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

# What Debian wants in every package's folder of documentation; nobody else installs it.
set(notes ${PROJECT_BINARY_DIR}/debian-notes)
configure_file(CHANGELOG.md ${notes}/changelog COPYONLY)
execute_process(COMMAND date -uR -d ${LUMO_DATE}
    OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
configure_file(cmake/changelog.Debian.in ${notes}/changelog.Debian @ONLY)
add_custom_target(debian-notes
    COMMAND gzip -9nkf changelog changelog.Debian
    WORKING_DIRECTORY ${notes})
file(WRITE ${notes}/triggers "activate-noawait ldconfig\n")

# lumo_package(component NAME SECTION lines of the description...)
function(lumo_package component name section)
    string(TOUPPER ${component} upper)
    list(JOIN ARGN "\n" text)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${text}" PARENT_SCOPE)
    set(doc ${CMAKE_INSTALL_DATADIR}/doc/${name})
    install(FILES LICENSE RENAME copyright DESTINATION ${doc}
        COMPONENT ${component} EXCLUDE_FROM_ALL)
    install(FILES ${notes}/changelog.gz ${notes}/changelog.Debian.gz DESTINATION ${doc}
        COMPONENT ${component} EXCLUDE_FROM_ALL)
endfunction()
lumo_package(runtime liblumo0 libs
    "The shared library: linear systems, least squares, singular values and"
    "matrix products by a GPU, behind a C interface with LAPACK's conventions."
    "Without a GPU the CPU does the same work.")
lumo_package(development liblumo-dev libdevel
    "Headers, a Fortran module, reference manual, and what CMake and pkg-config"
    "need to build programs with the library.")
lumo_package(dropin liblumo-lapack libs
    "The drop-in library: preloaded, it lets the library serve the BLAS and"
    "LAPACK calls of programs that were written without it.")
lumo_package(tools lumo-tools math
    "The lumo command: it solves systems that lie in Matrix Market or NumPy"
    "files, measures the library against the CPU LAPACK, and shows what it"
    "runs on.")
lumo_package(cuda liblumo-cuda libs
    "The plugin with which liblumo0 runs on a GPU. CUBLAS, of the CUDA toolkit"
    "that the plugin was built with, must be installed beside it.")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_DROPIN_DEPENDS runtime)
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)
foreach(libraries IN ITEMS RUNTIME DROPIN)
    set(CPACK_DEBIAN_${libraries}_PACKAGE_CONTROL_EXTRA ${notes}/triggers)
endforeach()
# For `lumo tune`, and pictures of `lumo svd` and `lumo bench`.
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS "liblumo-lapack")
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS "gnuplot-nox")
set(CPACK_DEBIAN_CUDA_PACKAGE_ENHANCES liblumo0)

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

add_custom_target(packages
    COMMAND ${CMAKE_COMMAND} -E rm -rf debian
    COMMAND ${CMAKE_CPACK_COMMAND} -G DEB
    DEPENDS ${built}
    USES_TERMINAL)
