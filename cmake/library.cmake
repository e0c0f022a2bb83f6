# liblumo.so. All of it is compiled once, as the object library lumo_objects, which the tests link
# too: they look inside the library, and play on its software device.

set(LUMO_KERNEL_UNITS
    src/basic/ApplySweeps/ApplySweeps
    src/basic/Complement/Complement
    src/basic/Conjugate/Conjugate
    src/basic/Copy/Copy
    src/basic/LACPY/LACPY
    src/basic/LASET/LASET
    src/basic/LASWP/LASWP
    src/basic/LuPanel/LuPanel
    src/basic/MADD/MADD
    src/basic/MakeReal/MakeReal
    src/basic/Norms/Norms
    src/basic/PermuteRows/PermuteRows
    src/basic/Precision/Precision
    src/basic/QrPanel/QrPanel
    src/basic/Scale/Scale
    src/basic/ScaleRows/ScaleRows
    src/basic/Set/Set
    src/basic/Subtract/Subtract
    src/basic/Transpose/Transpose
    src/basic/TriangularFactor/TriangularFactor
    src/basic/lar2v/lar2v
    src/basic/larfg/larfg
    src/basic/largv/largv
    src/basic/lartv/lartv
    src/basic/lasr/lasr
    src/blas/gemv/gemv
    src/blas/symv/symv
    src/brd/both_products/both_products
    src/brd/brd/TakeHead
    src/brd/next_column/next_column
    src/brd/reflectors/reflectors
    src/cudalib/Algorithm/Memset
    src/divide/columns/columns
    src/divide/secular/secular
    src/trd/bisection/bisection
    src/trd/companion/companion
    src/trd/hermitian_product/hermitian_product
    src/trd/hermitian_tiles/hermitian_tiles)
# A launcher that only launches stands in its header.
set(LUMO_LAUNCHERS ${LUMO_KERNEL_UNITS})
list(REMOVE_ITEM LUMO_LAUNCHERS src/brd/brd/TakeHead)
list(TRANSFORM LUMO_LAUNCHERS APPEND .cpp)
list(TRANSFORM LUMO_KERNEL_UNITS APPEND .cu OUTPUT_VARIABLE LUMO_KERNELS)

add_library(lumo_objects OBJECT
    platform/blas_threads.cpp
    platform/choose.cpp
    platform/error_texts.cpp
    platform/host_lapack.cpp
    platform/profile.cpp
    platform/registry.cpp
    platform/software/blas.cpp
    platform/software/copy.cpp
    platform/software/heap.cpp
    platform/software/instruments.cpp
    platform/software/launch.cpp
    platform/software/machine.cpp
    platform/software/memory.cpp
    platform/software/pool.cpp
    platform/software/production.cpp
    platform/software/streams.cpp
    platform/software/table.cpp
    platform/software/threads.cpp
    platform/unavailable.cpp
    src/blas/gemm.cpp
    src/blas/gemv.cpp
    src/blas/symm.cpp
    src/blas/syr2k.cpp
    src/blas/syrk.cpp
    src/blas/triangular.cpp
    src/common/exceptions.cpp
    src/common/state.cpp
    src/common/threads.cpp
    src/cudalib/exceptions.cpp
    src/cudalib/maps.cpp
    src/cudalib/processor.cpp
    src/cudalib/transfer.cpp
    src/cudalib/workspace_pool.cpp
    src/lapack/apply_q.cpp
    src/lapack/bdsdc.cpp
    src/lapack/bdsqr.cpp
    src/lapack/bidiagonal_panel.cpp
    src/lapack/block_reflector.cpp
    src/lapack/device_qr.cpp
    src/lapack/dqds.cpp
    src/lapack/dsgesv.cpp
    src/lapack/gebrd.cpp
    src/lapack/gecon.cpp
    src/lapack/gels.cpp
    src/lapack/gelsd.cpp
    src/lapack/generate_q.cpp
    src/lapack/geqrf.cpp
    src/lapack/gesdd.cpp
    src/lapack/gesv.cpp
    src/lapack/gesvd.cpp
    src/lapack/getrf.cpp
    src/lapack/getrs.cpp
    src/lapack/gglse.cpp
    src/lapack/labrd.cpp
    src/lapack/lu_pipeline.cpp
    src/lapack/orgbr.cpp
    src/lapack/orgqr.cpp
    src/lapack/ormqr.cpp
    src/lapack/orthogonal_factorization.cpp
    src/lapack/pocon.cpp
    src/lapack/posv.cpp
    src/lapack/potrf.cpp
    src/lapack/potrs.cpp
    src/lapack/stebz.cpp
    src/lapack/stedc.cpp
    src/lapack/syevd.cpp
    src/lapack/sygst.cpp
    src/lapack/sygvd.cpp
    src/lapack/sytrd.cpp
    src/lapack/trtrs.cpp
    src/runtime/device_exports.cpp
    src/runtime/devices.cpp
    src/runtime/frame.cpp
    src/runtime/hooks.cpp
    src/runtime/initialize.cpp
    src/runtime/memory_exports.cpp
    src/runtime/status_exports.cpp
    ${LUMO_LAUNCHERS}
    ${LUMO_KERNELS})

# Kernels are C++ to the software device; they must vectorise in any build that is not a debug one.
set_source_files_properties(${LUMO_KERNELS} PROPERTIES
    LANGUAGE CXX
    COMPILE_OPTIONS "$<IF:$<CONFIG:Debug>,-xc++,-xc++;-O3>")

file(RELATIVE_PATH LUMO_BIN_TO_LIB
    ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set_source_files_properties(platform/choose.cpp PROPERTIES
    COMPILE_DEFINITIONS LUMO_BIN_TO_LIB="${LUMO_BIN_TO_LIB}")

target_include_directories(lumo_objects
    PUBLIC ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/include)
target_link_libraries(lumo_objects
    PUBLIC LAPACK::LAPACK BLAS::BLAS Threads::Threads Boost::headers ${CMAKE_DL_LIBS})

# The ABI version is kept apart from the release's: it changes when the interface does.
add_library(lumo SHARED)
target_link_libraries(lumo PRIVATE lumo_objects)
target_link_options(lumo PRIVATE
    -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map -Wl,--no-undefined)
set_target_properties(lumo PROPERTIES
    SOVERSION 0
    LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/exports.map)
target_include_directories(lumo INTERFACE
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
add_library(Lumo::lumo ALIAS lumo)

# What keeps time instead of computing, for `lumo predict` and tests alone.
add_library(lumo_timeline STATIC EXCLUDE_FROM_ALL
    platform/timeline/clock.cpp
    platform/timeline/copies.cpp
    platform/timeline/costs.cpp
    platform/timeline/launches.cpp
    platform/timeline/machine_file.cpp
    platform/timeline/memory.cpp
    platform/timeline/panels.cpp
    platform/timeline/processors.cpp
    platform/timeline/state.cpp
    platform/timeline/streams.cpp
    platform/timeline/table.cpp
    platform/error_texts.cpp)
target_include_directories(lumo_timeline PUBLIC ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/src)
# The machine files, as they are found by name.
set(LUMO_MACHINES h100 h200 a100 laptop)
set(LUMO_MACHINE_TEXTS)
foreach(machine IN LISTS LUMO_MACHINES)
    set(file ${PROJECT_SOURCE_DIR}/platform/timeline/machines/${machine}.ini)
    file(READ ${file} text)
    string(APPEND LUMO_MACHINE_TEXTS "    {\"${machine}\", R\"ini(${text})ini\"},\n")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
endforeach()
file(CONFIGURE OUTPUT machines/machine_texts.inc CONTENT "@LUMO_MACHINE_TEXTS@" @ONLY)
target_sources(lumo_timeline PRIVATE platform/timeline/machines.cpp)
target_include_directories(lumo_timeline PRIVATE ${PROJECT_BINARY_DIR}/machines)
