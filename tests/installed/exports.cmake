# cmake -DLIBRARY=liblumo.so -DMAP=exports.map -DNM=nm -P exports.cmake
# The library's dynamic symbols are those of the list.
cmake_minimum_required(VERSION 3.25)
execute_process(COMMAND ${NM} -D --defined-only --format=posix ${LIBRARY}
    OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "(^|\n)[^ \n]+" defined "${symbols}")
list(TRANSFORM defined STRIP)

file(STRINGS ${MAP} lines REGEX "^ +[A-Za-z0-9_]+;")
foreach(line IN LISTS lines)
    string(REGEX REPLACE "[ ;]" "" name "${line}")
    list(APPEND listed ${name})
endforeach()

foreach(name IN LISTS defined)
    if(NOT name IN_LIST listed)
        message(SEND_ERROR "exported but not listed: ${name}")
    endif()
endforeach()
foreach(name IN LISTS listed)
    if(NOT name IN_LIST defined)
        message(SEND_ERROR "listed but not exported: ${name}")
    endif()
endforeach()
list(LENGTH listed count)
message(STATUS "${count} exports")
