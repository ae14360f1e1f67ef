#pragma once

#include <doodle/DoodleExport.h>

// Exported dictionary keys of the text form. Hosts use the same constants to
// build and read their own messages; the values are part of the wire format.
DOODLE_EXPORT extern const char *const kZQDataTypeDoodle;
DOODLE_EXPORT extern const char *const KStickerContentKey;
DOODLE_EXPORT extern const char *const KStickerUserDefineKey;
DOODLE_EXPORT extern const char *const KStickerActionEmojiUnicodeKey;
DOODLE_EXPORT extern const char *const KStickerActionNameKey;
DOODLE_EXPORT extern const char *const KShapeContentKey;
DOODLE_EXPORT extern const char *const KTextContentKey;
DOODLE_EXPORT extern const char *const KActionPositionXKey;
DOODLE_EXPORT extern const char *const KActionPositionYKey;
DOODLE_EXPORT extern const char *const KActionPositionEndXKey;
DOODLE_EXPORT extern const char *const KActionPositionEndYKey;
DOODLE_EXPORT extern const char *const KActionWidthKey;
DOODLE_EXPORT extern const char *const KActionHeightKey;
DOODLE_EXPORT extern const char *const KActionAngleKey;
DOODLE_EXPORT extern const char *const KActionTextKey;
DOODLE_EXPORT extern const char *const KActionTextSizeKey;
DOODLE_EXPORT extern const char *const PelDoodleImageTypeKey;
DOODLE_EXPORT extern const char *const PelDoodleImageNameKey;
DOODLE_EXPORT extern const char *const PelDoodleImageUriKey;
DOODLE_EXPORT extern const char *const PelDoodleResolutionKey;
DOODLE_EXPORT extern const char *const PelDoodlePositionKey;
DOODLE_EXPORT extern const char *const PelDoodleActionTypeKey;
DOODLE_EXPORT extern const char *const PelDoodleSeqNoKey;
DOODLE_EXPORT extern const char *const PelDoodleBrushKey;
DOODLE_EXPORT extern const char *const PelDoodleWidthKey;
DOODLE_EXPORT extern const char *const PelDoodleColorKey;
DOODLE_EXPORT extern const char *const PelDoodlePageIdKey;
DOODLE_EXPORT extern const char *const PelDoodlePageCountKey;
DOODLE_EXPORT extern const char *const PelDoodleUserUriKey;
DOODLE_EXPORT extern const char *const PelDoodleContentKey;
