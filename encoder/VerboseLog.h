#pragma once

namespace android {

/**
 * The system property that gates verbose logging, read at every gated log so that it can be switched on a running
 * process. Two rules are in use side by side, on purpose: the encoder's step-by-step lines are on unless switched
 * off, the whole-frame routines' level-2 lines are off unless asked for.
 */
bool isVerboseLogEnabled();      ///< unset counts as 5, on from 5
bool isTilingTraceLogEnabled();  ///< unset counts as 0, on from 6

}  // namespace android
