// Free helpers shared by the units and their hosts: the infix-to-postfix converter, the
// sampled string hash and the character search.
#pragma once

#include <cstdint>
#include <functional>

#include "Runtime/Errors.h"
#include "Runtime/Interfaces.h"
#include "Runtime/Lists.h"
#include "Runtime/Types.h"

namespace kz {

namespace HelperFunctions {
KZ_UNIT_SCOPE(HelperFunctions)
KZ_RESOURCESTRING(SMissingCloseParen, u"Missing close parenthesis")
}  // namespace HelperFunctions

/// Asks the caller about a token.
using TTokenTest = std::function<bool(const TIntfPtr<IInterface>& Token)>;
/// A token's priority; a lower number binds more tightly.
using TTokenPriority = std::function<std::int32_t(const TIntfPtr<IInterface>& Token)>;

/// Converts the infix tokens into postfix order; the tokens are opaque and only the caller's
/// functions classify them. An operator on the stack is popped while StackPriority(top) <=
/// InputPriority(incoming), so equal priorities associate to the left. An operand right after
/// a complete operand starts a new expression: the answer is the last expression's list.
/// Raises kz::Exception "Missing close parenthesis" when an expression ends with an opening
/// parenthesis unmatched; excess closing ones raise nothing. A null list or function raises
/// EAccessViolation; the caller's own exceptions pass through.
[[nodiscard]] TIntfPtr<IInterfaceList> PostFix(const TIntfPtr<IInterfaceList>& Infix, const TTokenTest& IsOpenParen,
                                               const TTokenTest& IsCloseParen, const TTokenTest& IsOperand,
                                               const TTokenPriority& StackPriority,
                                               const TTokenPriority& InputPriority);

/// h := h * 31 + code (wrapping in 32 bits) over every code unit of a string shorter than 16,
/// and over the units 1, 1 + n div 8, 1 + 2 (n div 8), ... of a longer one.
[[nodiscard]] std::int32_t CalculateHash(StringView S);
/// The same over the units 1, 1 + Step, ...; a Step below 1 counts as 1; 0 for "".
[[nodiscard]] std::int32_t CalculateHash(StringView S, std::int32_t Step);
/// The 1-based position in S of the first code unit that occurs in Chars; 0 when none does.
[[nodiscard]] std::int32_t ContainsCharacters(StringView S, StringView Chars);

}  // namespace kz
