#pragma once

namespace android {

/** The number at the start of a system property's text, `fallback` standing for an unset one; 0 for other text. */
int propertyNumber(const char* key, const char* fallback);

/** Whether the name of the device's chip begins with `prefix`, in either case. */
bool isChip(const char* prefix);

/**
 * The system property that gates verbose logging, read at every gated log so that it can be switched on a running
 * process. Two rules are in use side by side, on purpose: the encoder's step-by-step lines are on unless switched
 * off, the whole-frame routines' level-2 lines are off unless asked for.
 */
bool isVerboseLogEnabled();      ///< unset counts as 5, on from 5
bool isTilingTraceLogEnabled();  ///< unset counts as 0, on from 6

}  // namespace android
