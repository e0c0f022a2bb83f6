# The manual: lumo(1), and the reference from the headers' comments as lumo(3) and for browsers.
if(TARGET lumo-command)
    install(FILES docs/man/lumo.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endif()

find_package(Python COMPONENTS Interpreter QUIET)
if(NOT Python_Interpreter_FOUND)
    message(STATUS "Reference manual: not made, no Python")
    return()
endif()
set(LUMO_LIBRARY_PAGE ${PROJECT_BINARY_DIR}/lumo.3)
set(browser_page ${PROJECT_BINARY_DIR}/lumo.html)
function(lumo_reference form output)
    add_custom_command(OUTPUT ${output}
        COMMAND ${Python_EXECUTABLE} ${PROJECT_SOURCE_DIR}/tools/reference.py
            ${form} ${PROJECT_VERSION} ${output} ${LUMO_HEADERS}
        DEPENDS tools/reference.py ${LUMO_HEADERS}
        VERBATIM)
endfunction()
lumo_reference(man ${LUMO_LIBRARY_PAGE})
lumo_reference(html ${browser_page})
add_custom_target(manual ALL DEPENDS ${LUMO_LIBRARY_PAGE} ${browser_page})
install(FILES ${LUMO_LIBRARY_PAGE} DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 COMPONENT development)
install(FILES ${browser_page} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/lumo COMPONENT development)
