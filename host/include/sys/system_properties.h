#pragma once

/** Bytes of a property's name and value, their final NUL included. */
#define PROP_NAME_MAX 32
#define PROP_VALUE_MAX 92
