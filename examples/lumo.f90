! The interfaces of lumo.h that the example needs. Others are written after the same pattern:
! scalars by value, arrays as they are.
module lumo
    use, intrinsic :: iso_c_binding
    implicit none

    integer(c_int), parameter :: lumoNoError = 0, lumoArgumentError = 7, lumoDataError = 8

    interface
        integer(c_int) function lumoInitialize() bind(C, name="lumoInitialize")
            import :: c_int
        end function
        subroutine lumoShutdown() bind(C, name="lumoShutdown")
        end subroutine
        integer(c_int) function lumoGetErrorInfo() bind(C, name="lumoGetErrorInfo")
            import :: c_int
        end function
        integer(c_int) function lumoGetErrorInfoString(status, info, buffer, bufferSize) &
            bind(C, name="lumoGetErrorInfoString")
            import :: c_int, c_char
            integer(c_int), value :: status, info, bufferSize
            character(kind=c_char), intent(out) :: buffer(*)
        end function
        integer(c_int) function lumoSgels(trans, m, n, nrhs, a, lda, b, ldb) &
            bind(C, name="lumoSgels")
            import :: c_int, c_char, c_float
            character(kind=c_char), value :: trans
            integer(c_int), value :: m, n, nrhs, lda, ldb
            real(c_float), intent(inout) :: a(lda, *), b(ldb, *)
        end function
        integer(c_int) function lumoCgesv(n, nrhs, a, lda, ipiv, b, ldb) bind(C, name="lumoCgesv")
            import :: c_int, c_float_complex
            integer(c_int), value :: n, nrhs, lda, ldb
            complex(c_float_complex), intent(inout) :: a(lda, *), b(ldb, *)
            integer(c_int), intent(out) :: ipiv(*)
        end function
    end interface

contains

    ! Stops the program with the library's words, if a call has failed.
    subroutine check(status, what)
        integer(c_int), intent(in) :: status
        character(*), intent(in) :: what
        character(kind=c_char) :: buffer(200)
        integer :: length
        if (status == lumoNoError) return
        if (lumoGetErrorInfoString(status, lumoGetErrorInfo(), buffer, 200_c_int) /= 0) stop 2
        length = findloc(buffer, c_null_char, dim=1) - 1
        print '(*(a))', what, ": ", buffer(1:length)
        stop 1
    end subroutine
end module lumo
