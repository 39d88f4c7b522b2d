// The gain curves of the wide-travel linkage that several hands share (PaXini DexH13, Proception,
// LinkerHand L20, PICO PXRHand and XHAND1): each joint's motor covers more travel than the glove
// joint it follows, so light bends are amplified and deep bends compressed or offset, in three
// pieces. The PICO and the XHAND1 run them through the chain in models/shared/wide_linkage.h.
#pragma once

#include "core/curves.h"

namespace quil::linkage {

// The thumb base: 1.5x while light, compressed past -20, offset past -60.
inline constexpr Curve3 kThumbBase{-20, -60, scale(1.5), affine(0.6, -20.0), affine(1.0, 4.0)};
// The thumb tip (or the thumb's rotation motor, which shares its travel): 2.5x while light.
inline constexpr Curve3 kThumbTip{-20, -50, scale(2.5), affine(1.5, -20.0), affine(1.0, -45.0)};
// The index joint that shares its travel with the knuckle: deep bends are folded back.
inline constexpr Curve3 kIndexShared{-10, -60, scale(1.5), affine(0.5, -10.0), affine(2.0, 80.0)};
// The finger knuckles: doubled while light.
inline constexpr Curve3 kProximal{-30, -50, scale(2.0), affine(0.6, -42.0), affine(1.5, 3.0)};
// The distal finger joints: doubled while light, eased between -15 and -70.
inline constexpr Curve3 kDistal{-15, -70, scale(2.0), affine(0.5, -22.5), affine(1.5, 47.5)};

}  // namespace quil::linkage
