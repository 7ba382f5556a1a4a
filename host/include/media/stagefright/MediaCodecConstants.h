#pragma once

#include <stdint.h>

// In no named namespace, and one set per unit, as clients of the platform expect them.
namespace {

inline constexpr int32_t BITRATE_MODE_CQ = 0;
inline constexpr int32_t BITRATE_MODE_VBR = 1;
inline constexpr int32_t BITRATE_MODE_CBR = 2;
inline constexpr int32_t BITRATE_MODE_CBR_FD = 3;

inline constexpr int32_t BUFFER_FLAG_KEY_FRAME = 1;
inline constexpr int32_t BUFFER_FLAG_SYNC_FRAME = 1;
inline constexpr int32_t BUFFER_FLAG_CODEC_CONFIG = 2;
inline constexpr int32_t BUFFER_FLAG_END_OF_STREAM = 4;
inline constexpr int32_t BUFFER_FLAG_PARTIAL_FRAME = 8;
inline constexpr int32_t BUFFER_FLAG_MUXER_DATA = 16;
inline constexpr int32_t BUFFER_FLAG_DECODE_ONLY = 32;

inline constexpr int32_t CONFIGURE_FLAG_ENCODE = 1;
inline constexpr int32_t CONFIGURE_FLAG_USE_BLOCK_MODEL = 2;

// The Java interface's numbers; the native calls return those of MediaErrors.h.
inline constexpr int32_t INFO_TRY_AGAIN_LATER = -1;
inline constexpr int32_t INFO_OUTPUT_FORMAT_CHANGED = -2;

inline constexpr int32_t COLOR_FormatYUV420Planar = 19;
inline constexpr int32_t COLOR_FormatYUV420PackedPlanar = 20;
inline constexpr int32_t COLOR_FormatYUV420SemiPlanar = 21;
inline constexpr int32_t COLOR_FormatYUV420PackedSemiPlanar = 39;
inline constexpr int32_t COLOR_FormatYUVP010 = 54;
inline constexpr int32_t COLOR_FormatSurface = 0x7F000789;
inline constexpr int32_t COLOR_Format32bitABGR8888 = 0x7F00A000;
inline constexpr int32_t COLOR_Format32bitABGR2101010 = 0x7F00AAA2;
inline constexpr int32_t COLOR_FormatYUV420Flexible = 0x7F420888;

inline constexpr int32_t COLOR_RANGE_FULL = 1;
inline constexpr int32_t COLOR_RANGE_LIMITED = 2;

inline constexpr int32_t COLOR_STANDARD_BT709 = 1;
inline constexpr int32_t COLOR_STANDARD_BT601_PAL = 2;
inline constexpr int32_t COLOR_STANDARD_BT601_NTSC = 4;
inline constexpr int32_t COLOR_STANDARD_BT2020 = 6;

inline constexpr int32_t COLOR_TRANSFER_LINEAR = 1;
inline constexpr int32_t COLOR_TRANSFER_SDR_VIDEO = 3;
inline constexpr int32_t COLOR_TRANSFER_ST2084 = 6;
inline constexpr int32_t COLOR_TRANSFER_HLG = 7;

inline constexpr char KEY_BIT_RATE[] = "bitrate";
inline constexpr char KEY_BITRATE_MODE[] = "bitrate-mode";
inline constexpr char KEY_CAPTURE_RATE[] = "capture-rate";
inline constexpr char KEY_COLOR_FORMAT[] = "color-format";
inline constexpr char KEY_COLOR_RANGE[] = "color-range";
inline constexpr char KEY_COLOR_STANDARD[] = "color-standard";
inline constexpr char KEY_COLOR_TRANSFER[] = "color-transfer";
inline constexpr char KEY_FRAME_RATE[] = "frame-rate";
inline constexpr char KEY_GRID_COLUMNS[] = "grid-cols";
inline constexpr char KEY_GRID_ROWS[] = "grid-rows";
inline constexpr char KEY_HEIGHT[] = "height";
inline constexpr char KEY_I_FRAME_INTERVAL[] = "i-frame-interval";
inline constexpr char KEY_IS_DEFAULT[] = "is-default";
inline constexpr char KEY_LATENCY[] = "latency";
inline constexpr char KEY_LEVEL[] = "level";
inline constexpr char KEY_MAX_INPUT_SIZE[] = "max-input-size";
inline constexpr char KEY_MIME[] = "mime";
inline constexpr char KEY_OPERATING_RATE[] = "operating-rate";
inline constexpr char KEY_PRIORITY[] = "priority";
inline constexpr char KEY_PROFILE[] = "profile";
inline constexpr char KEY_QUALITY[] = "quality";
inline constexpr char KEY_ROTATION[] = "rotation-degrees";
inline constexpr char KEY_SLICE_HEIGHT[] = "slice-height";
inline constexpr char KEY_STRIDE[] = "stride";
inline constexpr char KEY_TILE_HEIGHT[] = "tile-height";
inline constexpr char KEY_TILE_WIDTH[] = "tile-width";
inline constexpr char KEY_TRACK_ID[] = "track-id";
inline constexpr char KEY_WIDTH[] = "width";

inline constexpr char MIMETYPE_IMAGE_ANDROID_HEIC[] = "image/vnd.android.heic";
inline constexpr char MIMETYPE_VIDEO_AVC[] = "video/avc";
inline constexpr char MIMETYPE_VIDEO_HEVC[] = "video/hevc";

}  // namespace
