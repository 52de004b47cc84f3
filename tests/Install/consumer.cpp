#include "KZCommon/KZCommon.h"

int main() { return kz::IsUnitInitialized("Runtime") && kz::Format(u"%d", {1}) == u"1" ? 0 : 1; }
