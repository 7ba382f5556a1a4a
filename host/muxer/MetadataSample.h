#pragma once

#include "BoxWriter.h"

namespace quill::host {

/** The kind of a metadata sample. */
struct MetadataKind {
    enum class Type { kUnknown, kExif, kXmp };
    Type type = Type::kUnknown;
    size_t tiffOffset = 0;  ///< of the TIFF header in an EXIF sample
};

/** Recognises EXIF in its usual framings and XMP packets by their first bytes. */
MetadataKind classifyMetadata(ByteView sample);

}  // namespace quill::host
