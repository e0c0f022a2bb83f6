# `make bundle`: an archive that runs on a GPU machine with a driver and CUBLAS and no other
# packages. It holds the library and its plugin, the command, the examples, the numerical tests,
# the benchmarks, and the run-time libraries that they need.
set(programs example_plate example_cylinder)
foreach(program lumo-command test_kernels test_lapack test_blas bench_lapack
        bench_eigen bench_least_squares bench_predictions bench_svd bench_blas)
    if(TARGET ${program})
        list(APPEND programs ${program})
    endif()
endforeach()

install(TARGETS lumo ${programs}
    RUNTIME_DEPENDENCY_SET bundled
    RUNTIME DESTINATION bin COMPONENT bundle EXCLUDE_FROM_ALL
    LIBRARY DESTINATION lib COMPONENT bundle EXCLUDE_FROM_ALL NAMELINK_SKIP)
if(LUMO_HAVE_CUDA)
    install(TARGETS lumo-cuda LIBRARY DESTINATION lib COMPONENT bundle EXCLUDE_FROM_ALL)
endif()
# The C library belongs to the machine.
install(RUNTIME_DEPENDENCY_SET bundled
    PRE_EXCLUDE_REGEXES "^ld-linux" "^lib(c|m|dl|rt|pthread)\\.so"
    POST_EXCLUDE_REGEXES "/liblumo\\."
    LIBRARY DESTINATION lib COMPONENT bundle EXCLUDE_FROM_ALL)
install(PROGRAMS tools/run-checks DESTINATION . COMPONENT bundle EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR TGZ)
set(CPACK_PACKAGE_FILE_NAME lumo-bundle)
set(CPACK_COMPONENTS_ALL bundle)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY ON)
set(CPACK_STRIP_FILES ON)
include(CPack)
