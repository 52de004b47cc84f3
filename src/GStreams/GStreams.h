// Buffered and text streams over any byte stream, and the filer that keeps each collection
// item's class. The unit's one include for users; each class family has its own header.
#pragma once

#include "GStreams/Messages.h"
#include "GStreams/BufferStream.h"
#include "GStreams/TextStream.h"
#include "GStreams/SpecialFiler.h"
