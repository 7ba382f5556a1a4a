#pragma once

/** For a class's private section: no copying. */
#define DISALLOW_EVIL_CONSTRUCTORS(name) \
    name(const name&);                   \
    void operator=(const name&)
