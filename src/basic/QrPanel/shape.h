// What the launcher and the kernel of the unit share.
#pragma once

namespace lumo {

// A lane keeps a row of this many elements, as its registers allow beside the sums of products.
template <class T>
constexpr int qrPanelColumns = sizeof(T) > 8 ? 16 : 32;
constexpr int qrPanelLanes = 256;

// A block's part of a column's products with all columns, and the column's row in all of them,
// which is the first block's to tell.
template <class T>
struct ReflectorOffer {
    T sums[qrPanelColumns<T>], head[qrPanelColumns<T>];
};

}  // namespace lumo
