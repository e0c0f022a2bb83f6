/* Device memory for programs that use the lumoDevice... functions (an extension of the interface
 * in lumo.h).
 *
 * On a machine without a GPU these functions are the only way to memory of Lumo's device; on a
 * GPU they are as good as the CUDA runtime's own. All but lumoDeviceFree return status 1 before
 * lumoInitialize.
 */
#ifndef LUMO_MEMORY_H
#define LUMO_MEMORY_H

#include <stddef.h>

#include "lumo.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Allocates device memory, aligned for every type; *pointer is null for 0 bytes or on failure of
 * any kind. Status 7, info -1: null pointer. Status 5: not so much memory. */
LUMO_API lumoStatus lumoDeviceMalloc(void** pointer, size_t bytes);

/* Frees what lumoDeviceMalloc gave; null is allowed. Status 10, info 17: no such block. */
LUMO_API lumoStatus lumoDeviceFree(void* pointer);

/* Copies a rows x columns matrix from host to device memory, or back. Elements are elementSize
 * bytes; leading dimensions count elements.
 *
 * Status 7, info -1: rows < 0; -2: columns < 0; -3: elementSize is 0; -5, -7: a leading dimension
 * below max(1, rows); and while rows, columns > 0 -4, -6: null; -3: elements so large that a
 * matrix would not fit the address space. */
LUMO_API lumoStatus lumoDeviceSetMatrix(int rows, int columns, size_t elementSize, const void* host,
                                        int ldhost, void* device, int lddevice);
LUMO_API lumoStatus lumoDeviceGetMatrix(int rows, int columns, size_t elementSize,
                                        const void* device, int lddevice, void* host, int ldhost);

#ifdef __cplusplus
}
#endif

#endif
