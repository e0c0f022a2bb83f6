# cmake -DBUILD=the build tree -DSOURCE=this folder -DWORK=scratch -DCC=compiler -P consumer.cmake
# Installs the tree, then builds and runs a user's program against it by CMake and by pkg-config.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${WORK})
set(prefix ${WORK}/prefix)

function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})

run(${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/cmake -G Ninja -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_C_COMPILER=${CC})
run(${CMAKE_COMMAND} --build ${WORK}/cmake)
run(${WORK}/cmake/consumer)

file(GLOB_RECURSE pc ${prefix}/lumo.pc)
get_filename_component(pcdir ${pc} DIRECTORY)
get_filename_component(libdir ${pcdir} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pcdir})
execute_process(COMMAND pkg-config --cflags --libs lumo
    OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags)
run(${CC} -std=c99 -pedantic -Wall -Wextra -Werror ${SOURCE}/consumer.c -o ${WORK}/consumer
    ${flags} -Wl,-rpath,${libdir} -lm)
run(${WORK}/consumer)

if(EXISTS ${prefix}/bin/lumo)
    run(${prefix}/bin/lumo info)
endif()
