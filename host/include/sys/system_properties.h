#pragma once

/** Sizes of a property's name and value in bytes, with the final NUL. */
#define PROP_NAME_MAX 32
#define PROP_VALUE_MAX 92
