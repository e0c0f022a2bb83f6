# cmake -DBUILD=the build tree -DSOURCE=this folder -DWORK=scratch -DCC=compiler -DCXX=compiler
#     -DFC=Fortran compiler, if there is one -P consumer.cmake
# Installs the tree, then builds and runs users' programs against it by CMake and by pkg-config.
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
# run_program(name compiler and options and sources...)
set(strict -pedantic -Wall -Wextra -Werror)
function(run_program name)
    run(${ARGN} -o ${WORK}/${name} ${flags} -Wl,-rpath,${libdir} -lm)
    run(${WORK}/${name})
endfunction()
run_program(consumer ${CC} -std=c99 ${strict} ${SOURCE}/consumer.c)
run_program(complex ${CC} -std=c99 ${strict} ${SOURCE}/complex.c)
run_program(complex++ ${CXX} -std=c++17 ${strict} -x c++ ${SOURCE}/complex.c -x none)
if(FC AND EXISTS ${prefix}/include/lumo.f90)
    run_program(fortran ${FC} -std=f2008 ${strict} -J${WORK}
        ${prefix}/include/lumo.f90 ${SOURCE}/consumer.f90)
else()
    message(STATUS "The Fortran module is not compiled: no Fortran compiler or no Python")
endif()

# Each header serves alone.
file(GLOB headers RELATIVE ${prefix}/include ${prefix}/include/*.h)
foreach(header IN LISTS headers)
    run(${CC} -std=c99 ${strict} -fsyntax-only -I${prefix}/include -include ${header}
        -x c /dev/null)
endforeach()

if(EXISTS ${prefix}/bin/lumo)
    run(${prefix}/bin/lumo info)
endif()
