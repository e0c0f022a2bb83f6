! A program of a user's in Fortran: complex scalars by value, arrays, device memory, an answer.
! (2 + i) (1 + i) (3 - 2i) + 3i (1 - i) = 12 + 10i, in both precisions, on both memories.
program consumer
    use lumo
    implicit none
    complex(c_double_complex) :: z(1, 1) = (1, -1)
    complex(c_double_complex), parameter :: p(1, 1) = (1, 1), q(1, 1) = (3, -2)
    complex(c_float_complex), target :: abc(3) = [(1, 1), (3, -2), (1, -1)]
    complex(c_float_complex), parameter :: alpha = (2, 1), beta = (0, 3)
    type(c_ptr) :: d(3)
    integer(c_int) :: devices, failed, i

    failed = lumoInitialize() + lumoGetDeviceCount(devices)
    failed = failed + lumoZgemm('N', 'n', 1, 1, 1, (2d0, 1d0), p, 1, q, 1, (0d0, 3d0), z, 1)
    do i = 1, 3
        failed = failed + lumoDeviceMalloc(d(i), 8_c_size_t)
        failed = failed + lumoDeviceSetMatrix(1, 1, 8_c_size_t, c_loc(abc(i)), 1, d(i), 1)
    end do
    failed = failed + lumoDeviceCgemm('N', 'N', 1, 1, 1, alpha, d(1), 1, d(2), 1, beta, d(3), 1)
    failed = failed + lumoDeviceGetMatrix(1, 1, 8_c_size_t, d(3), 1, c_loc(abc(3)), 1)
    do i = 1, 3
        failed = failed + lumoDeviceFree(d(i))
    end do
    call lumoShutdown()
    if (failed /= 0 .or. devices < 1) error stop "a call failed"
    if (abs(z(1, 1) - (12, 10)) + abs(abc(3) - (12, 10)) > 0) error stop "the products are wrong"
end program consumer
