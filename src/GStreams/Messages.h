// The GStreams unit's messages and constants.
#pragma once

#include "Runtime/Errors.h"
#include "Runtime/Types.h"

namespace kz {

namespace GStreams {
KZ_UNIT_SCOPE(GStreams)
KZ_RESOURCESTRING(SInvalidBufferState, u"Invalid buffer state")
KZ_RESOURCESTRING(SInvalidOriginPoint, u"Invalid Origin Point specified: %s")
KZ_RESOURCESTRING(SErrorSeekingInBuffer, u"Error seeking in buffer")
KZ_RESOURCESTRING(SInvalidBufferSize, u"Invalid buffer size specified: %s")
KZ_RESOURCESTRING(SPushBackOverflow, u"Overflow on push back")
KZ_RESOURCESTRING(SInvalidEncodingEOF, u"Invalid stream encoding determination, EOF reached")
/// Declared for clients of the unit; nothing here raises it.
KZ_RESOURCESTRING(SInvalidSeekEOF, u"Invalid seek command, EOF reached")
KZ_RESOURCESTRING(SNoWriterDefined, u"No TWriter defined for filer")
KZ_RESOURCESTRING(SNoReaderDefined, u"No TReader defined for filer")
/// Declared for the tokenizers clients build on the stream tokens; nothing here raises them.
KZ_RESOURCESTRING(SInvalidStringValue, u"Invalid string value, string was not terminated")
KZ_RESOURCESTRING(SInvalidTokenHint, u"Invalid Token hint for parsing token: %s")
/// One level of indentation for text the unit's clients write.
inline constexpr StringView IndentString = u"  ";
}  // namespace GStreams

}  // namespace kz
