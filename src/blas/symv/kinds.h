// Template arguments of the symv kernels, which their names show.
#pragma once

enum uploType { uploLower, uploUpper };
// Bounds may be ignored if the matrix consists of whole tiles.
enum boundsType { boundsIgnored, boundsTested };
