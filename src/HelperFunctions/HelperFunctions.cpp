#include "HelperFunctions/HelperFunctions.h"

#include "KZInterfaceCollections/KZInterfaceCollections.h"

namespace kz {

using namespace Runtime;
using namespace HelperFunctions;

TIntfPtr<IInterfaceList> PostFix(const TIntfPtr<IInterfaceList>& Infix, const TTokenTest& IsOpenParen,
                                 const TTokenTest& IsCloseParen, const TTokenTest& IsOperand,
                                 const TTokenPriority& StackPriority, const TTokenPriority& InputPriority) {
  if (!Infix) RaiseNullAccess(u"infix list");
  if (!IsOpenParen || !IsCloseParen || !IsOperand || !StackPriority || !InputPriority)
    RaiseNullAccess(u"token function");
  TIntfPtr<IInterfaceList> Result(new TInterfaceList);
  auto* Operators = new TIStack;
  const TIntfPtr<ICloneable> Keep(Operators);
  TIStack& Stack = *Operators;
  std::int32_t Depth = 0;
  bool Complete = false;
  auto Flush = [&] {
    if (Depth > 0) throw Exception(SMissingCloseParen);
    while (!Stack.IsEmpty()) Result->Add(Stack.Pop());
  };
  for (std::int32_t i = 0; i < Infix->GetCount(); ++i) {
    const TIntfPtr<IInterface> T = Infix->Get(i);
    if (IsCloseParen(T)) {
      --Depth;
      while (!Stack.IsEmpty() && !IsOpenParen(Stack.Peek())) Result->Add(Stack.Pop());
      if (!Stack.IsEmpty()) (void)Stack.Pop();
      Complete = true;
    } else if (IsOperand(T)) {
      if (Complete) {
        // The previous expression is complete; only the last one is answered.
        Flush();
        Result = TIntfPtr<IInterfaceList>(new TInterfaceList);
      }
      Result->Add(T);
      Complete = true;
    } else {
      if (IsOpenParen(T)) ++Depth;
      while (!Stack.IsEmpty() && StackPriority(Stack.Peek()) <= InputPriority(T)) Result->Add(Stack.Pop());
      Stack.Push(T);
      Complete = false;
    }
  }
  Flush();
  return Result;
}

namespace {
std::uint32_t Mix(std::uint32_t H, Char C) { return H * 31u + C; }
}  // namespace

std::int32_t CalculateHash(StringView S) {
  const std::size_t N = S.size();
  std::uint32_t H = 0;
  const std::size_t Step = N >= 16 ? N / 8 : 1;
  for (std::size_t i = 0; i < N; i += Step) H = Mix(H, S[i]);
  return static_cast<std::int32_t>(H);
}

std::int32_t CalculateHash(StringView S, std::int32_t Step) {
  const std::size_t D = Step < 1 ? 1 : static_cast<std::size_t>(Step);
  std::uint32_t H = 0;
  for (std::size_t i = 0; i < S.size(); i += D) H = Mix(H, S[i]);
  return static_cast<std::int32_t>(H);
}

std::int32_t ContainsCharacters(StringView S, StringView Chars) {
  const std::size_t P = S.find_first_of(Chars);
  return P == StringView::npos ? 0 : static_cast<std::int32_t>(P + 1);
}

}  // namespace kz
