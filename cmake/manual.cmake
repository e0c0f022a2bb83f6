# The manual: lumo(1); the reference from the headers' comments as lumo(3), with a page for every
# function, and for browsers. Pages are dated and compressed reproducibly.
file(STRINGS CHANGELOG.md releases REGEX "^## .* - [0-9-]+$" LIMIT_COUNT 1)
string(REGEX MATCH "[0-9-]+$" LUMO_DATE "${releases}")
if(DEFINED ENV{SOURCE_DATE_EPOCH})
    string(TIMESTAMP LUMO_DATE "%Y-%m-%d" UTC)  # heeds the variable
endif()

set(LUMO_MANUAL ${PROJECT_BINARY_DIR}/man)
set(command_page ${LUMO_MANUAL}/man1/lumo.1)
configure_file(docs/man/lumo.1.in ${command_page} @ONLY)
add_custom_command(OUTPUT ${command_page}.gz
    COMMAND gzip -9nkf ${command_page}
    DEPENDS ${command_page}
    VERBATIM)
add_custom_target(manual ALL DEPENDS ${command_page}.gz)
if(TARGET lumo-command)
    install(FILES ${command_page}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endif()

find_package(Python COMPONENTS Interpreter QUIET)
if(NOT Python_Interpreter_FOUND)
    message(STATUS "Reference manual, Fortran module: not made, no Python")
    return()
endif()
# lumo_from_headers(OUTPUT script arguments...): what a script makes of the public headers.
function(lumo_from_headers output script)
    add_custom_command(OUTPUT ${output}
        COMMAND ${Python_EXECUTABLE} -B ${PROJECT_SOURCE_DIR}/tools/${script} ${ARGN}
            ${LUMO_HEADERS}
        DEPENDS tools/${script} tools/headers.py ${LUMO_HEADERS}
        VERBATIM)
endfunction()
set(browser_page ${PROJECT_BINARY_DIR}/lumo.html)
set(LUMO_FORTRAN_MODULE ${PROJECT_BINARY_DIR}/lumo.f90)
lumo_from_headers(${LUMO_MANUAL}/man3/lumo.3.gz
    reference.py man ${PROJECT_VERSION} ${LUMO_DATE} ${LUMO_MANUAL}/man3)
lumo_from_headers(${browser_page} reference.py html ${PROJECT_VERSION} ${browser_page})
lumo_from_headers(${LUMO_FORTRAN_MODULE} fortran_module.py ${LUMO_FORTRAN_MODULE})
add_custom_target(reference ALL
    DEPENDS ${LUMO_MANUAL}/man3/lumo.3.gz ${browser_page} ${LUMO_FORTRAN_MODULE})
add_dependencies(manual reference)
install(DIRECTORY ${LUMO_MANUAL}/man3 DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT development)
install(FILES ${browser_page} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/lumo COMPONENT development)
install(FILES ${LUMO_FORTRAN_MODULE}
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
