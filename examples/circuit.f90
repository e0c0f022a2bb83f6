! An RC ladder at several frequencies, by lumoCgesv; then its time constant from the amplitudes, a
! line of least squares, by lumoSgels.
!
! Three sections, each a resistor R in series and a capacitor C to ground, driven by 1 V. Far above
! the corner frequency each section turns the amplitude down by w R C.
program circuit
    use lumo
    implicit none
    integer(c_int), parameter :: sections = 3, frequencies = 8
    real(c_float), parameter :: rc = 2e-3
    complex(c_float_complex) :: a(sections, sections), v(sections, 1)
    real(c_float) :: line(frequencies, 2), level(frequencies, 1), w
    integer(c_int) :: ipiv(sections)
    integer :: f, k

    call check(lumoInitialize(), "lumoInitialize")
    print '(a)', "   rad/s   output"
    do f = 1, frequencies
        w = 5e4 * 2.0**f
        ! Kirchhoff's law at each node, multiplied by R: -v(k-1) + (2 + i w R C) v(k) - v(k+1) = 0.
        a = 0
        do k = 1, sections
            a(k, k) = cmplx(merge(2.0, 1.0, k < sections), w * rc)
            if (k > 1) a(k, k - 1) = -1
            if (k < sections) a(k, k + 1) = -1
        end do
        v = 0
        v(1, 1) = 1
        call check(lumoCgesv(sections, 1_c_int, a, sections, ipiv, v, sections), "lumoCgesv")
        print '(es10.2, es10.2)', w, abs(v(sections, 1))
        line(f, :) = [1.0, log(w)]
        level(f, 1) = log(abs(v(sections, 1)))
    end do

    ! log |v| = -sections (log(RC) + log(w))
    call check(lumoSgels('N', frequencies, 2_c_int, 1_c_int, line, frequencies, level, &
                         frequencies), "lumoSgels")
    call lumoShutdown()
    print '(a, f7.4, a, es9.3, a)', "slope ", level(2, 1), ", RC = ", &
        exp(level(1, 1) / level(2, 1)), " s"
    if (abs(level(2, 1) + sections) > 0.01) error stop "the slope is wrong"
    if (abs(exp(level(1, 1) / level(2, 1)) / rc - 1) > 0.02) error stop "the time constant is wrong"

contains

    ! Stops the program with the library's words, if a call has failed.
    subroutine check(status, what)
        integer(c_int), intent(in) :: status
        character(*), intent(in) :: what
        character(kind=c_char) :: buffer(200)
        if (status == lumoNoError) return
        if (lumoGetErrorInfoString(status, lumoGetErrorInfo(), buffer, 200_c_int) /= 0) stop 2
        print '(*(a))', what, ": ", buffer(1:findloc(buffer, c_null_char, dim=1) - 1)
        stop 1
    end subroutine
end program circuit
