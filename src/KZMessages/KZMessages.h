// The window message the library defines: asking a view to invalidate one property.
#pragma once

#include <cstddef>
#include <cstdint>

#include "KZConstants/KZConstants.h"

namespace kz {

namespace KZMessages {
KZ_UNIT_SCOPE(KZMessages)
/// Identifier of the property-invalidation message. It lies in the range reserved for an
/// application's private messages (from 0x8000), 0x100 above its start so that a host's own
/// first private messages do not collide with it.
inline constexpr std::uint32_t KZM_INVALIDATEPROPERTY = 0x8000 + 0x100;
}  // namespace KZMessages

/// The record of the property-invalidation message. On 32-bit builds it is 16 bytes with
/// the fields at offsets 0, 4, 8 and 12 (each filler takes no room and shares the offset of
/// the field after it); on 64-bit builds each
/// filler widens the parameter before it to eight bytes, giving offsets 0, 4, 8, 12, 16, 20
/// and 24 bytes in all.
struct TKZInvalidateProperty {
  std::uint32_t Msg;
  std::int32_t Index;  // the property to invalidate (the message's first parameter)
  TKZDWordFiller WParamFiller;
  std::int32_t UnusedLParam;  // the second parameter, unused
  TKZDWordFiller LParamFiller;
  std::int32_t Result;
};

#if UINTPTR_MAX == 0xFFFFFFFFu
static_assert(sizeof(TKZInvalidateProperty) == 16);
static_assert(offsetof(TKZInvalidateProperty, Msg) == 0);
static_assert(offsetof(TKZInvalidateProperty, Index) == 4);
static_assert(offsetof(TKZInvalidateProperty, WParamFiller) == 8);
static_assert(offsetof(TKZInvalidateProperty, UnusedLParam) == 8);
static_assert(offsetof(TKZInvalidateProperty, LParamFiller) == 12);
static_assert(offsetof(TKZInvalidateProperty, Result) == 12);
#else
static_assert(sizeof(void*) == 8, "32- and 64-bit builds only");
static_assert(sizeof(TKZInvalidateProperty) == 24);
static_assert(offsetof(TKZInvalidateProperty, Msg) == 0);
static_assert(offsetof(TKZInvalidateProperty, Index) == 4);
static_assert(offsetof(TKZInvalidateProperty, WParamFiller) == 8);
static_assert(offsetof(TKZInvalidateProperty, UnusedLParam) == 12);
static_assert(offsetof(TKZInvalidateProperty, LParamFiller) == 16);
static_assert(offsetof(TKZInvalidateProperty, Result) == 20);
#endif

}  // namespace kz
