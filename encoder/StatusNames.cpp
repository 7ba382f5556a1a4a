#include "StatusNames.h"

#include <stdint.h>
#include <string.h>

namespace android {

const char* statusName(status_t status) {
    static constexpr struct {
        status_t status;
        const char* name;
    } kNames[] = {
            {NO_ERROR, "NO_ERROR"},
            {UNKNOWN_ERROR, "UNKNOWN_ERROR"},
            {NO_MEMORY, "NO_MEMORY"},
            {INVALID_OPERATION, "INVALID_OPERATION"},
            {BAD_VALUE, "BAD_VALUE"},
            {BAD_TYPE, "BAD_TYPE"},
            {NAME_NOT_FOUND, "NAME_NOT_FOUND"},
            {PERMISSION_DENIED, "PERMISSION_DENIED"},
            {NO_INIT, "NO_INIT"},
            {ALREADY_EXISTS, "ALREADY_EXISTS"},
            {DEAD_OBJECT, "DEAD_OBJECT"},
            {FAILED_TRANSACTION, "FAILED_TRANSACTION"},
            {BAD_INDEX, "BAD_INDEX"},
            {NOT_ENOUGH_DATA, "NOT_ENOUGH_DATA"},
            {WOULD_BLOCK, "WOULD_BLOCK"},
            {TIMED_OUT, "TIMED_OUT"},
            {UNKNOWN_TRANSACTION, "UNKNOWN_TRANSACTION"},
            {FDS_NOT_ALLOWED, "FDS_NOT_ALLOWED"},
    };
    for (const auto& entry : kNames) {
        if (entry.status == status) return entry.name;
    }
    return "??";
}

int negated(status_t status) { return static_cast<int>(0u - static_cast<uint32_t>(status)); }

const char* statusText(status_t status) { return strerror(negated(status)); }

}  // namespace android
