#pragma once

// Umbrella header: every public header of the doodle library.
#include <doodle/DoodleExport.h>
#include <doodle/alert/RoShow.h>
#include <doodle/board/DoodleSurface.h>
#include <doodle/canvas/ZQDoodleDrawView.h>
#include <doodle/canvas/ZQDoodleView.h>
#include <doodle/controller/DoodleLayout.h>
#include <doodle/controller/DoodleLayoutDelegate.h>
#include <doodle/model/DoodleAction.h>
#include <doodle/model/DoodleColor.h>
#include <doodle/model/DoodleKeys.h>
#include <doodle/model/DoodlePathCache.h>
#include <doodle/model/DoodlePoint.h>
#include <doodle/model/DoodleTranslate.h>
#include <doodle/support/DoodleScreen.h>
#include <doodle/support/DoodleTranslations.h>
#include <doodle/support/DoodleWeak.h>
#include <doodle/toolbar/BrushColorButton.h>
#include <doodle/toolbar/BrushColorView.h>
#include <doodle/toolbar/BrushLineView.h>
#include <doodle/toolbar/ZQColourToolbar.h>
#include <doodle/toolbar/ZQDoodleButton.h>
#include <doodle/toolbar/ZQDoodleButtonView.h>
#include <doodle/toolbar/ZQDoodleRoundedView.h>
#include <doodle/toolbar/ZQDoodleToolbar.h>
