/* What happened in this thread (an extension of the interface in lumo.h).
 *
 * lumoGetLastStatus and lumoGetErrorInfo read two words that all threads share: between a call and
 * the question another thread's call may have overwritten them. These two answer for the calling
 * thread alone. They need no initialisation and change nothing.
 */
#ifndef LUMO_THREAD_H
#define LUMO_THREAD_H

#include "lumo.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The status of this thread's most recent call that returned one; lumoNoError before the first. */
LUMO_API lumoStatus lumoGetThreadStatus(void);

/* The info that belongs to that status: 0 for statuses 0 to 6. */
LUMO_API int lumoGetThreadErrorInfo(void);

#ifdef __cplusplus
}
#endif

#endif
