/* Which Lumo this is (an extension of the interface in lumo.h). */
#ifndef LUMO_VERSION_H
#define LUMO_VERSION_H

#include "lumo.h"

/* The version that a program is compiled with. */
#define LUMO_VERSION_MAJOR 0
#define LUMO_VERSION_MINOR 1
#define LUMO_VERSION_PATCH 0

/* One number that grows with the version, for comparisons: 10203 for 1.2.3. */
#define LUMO_VERSION (LUMO_VERSION_MAJOR * 10000 + LUMO_VERSION_MINOR * 100 + LUMO_VERSION_PATCH)

#ifdef __cplusplus
extern "C" {
#endif

/* The version that a program runs with, a number as LUMO_VERSION. */
LUMO_API int lumoGetVersion(void);

#ifdef __cplusplus
}
#endif

#endif
