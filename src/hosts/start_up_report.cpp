#include "hosts/start_up_report.h"

#include <stdio.h>

#include "app/game.h"
#include "core/diagnostics.h"

static char* kept_reason;
static size_t kept_capacity;

// The last diagnostic, not the first: the step that stops the start-up says why just before it
// fails, while notes on what the game lets pass (an unknown material, say) may come before it.
static void keep_reason(const char* file, int32_t line, const char* message)
{
    if (line > 0)
        snprintf(kept_reason, kept_capacity, "%s:%d: %s", file, static_cast<int>(line), message);
    else
        snprintf(kept_reason, kept_capacity, "%s: %s", file, message);
}

int game_init_keeping_reason(char* reason, size_t capacity)
{
    reason[0] = '\0';
    kept_reason = reason;
    kept_capacity = capacity;
    diagnostics = keep_reason;
    int started = game_init();
    diagnostics = nullptr;
    return started;
}
