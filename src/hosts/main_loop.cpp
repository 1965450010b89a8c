#include "hosts/main_loop.h"

#include "core/settings.h"

void main_loop_run(const main_loop_hooks* hooks)
{
    loop_schedule schedule;
    schedule_start(&schedule, UPS, FPS);
    int started = hooks->start == nullptr;
    for (;;) {
        if (!hooks->pump_input(&schedule))
            return;
        if (!started) {
            if (!hooks->start())
                return;
            started = 1;
        }
        double now = hooks->clock();
        if (hooks->before_pass && now >= schedule_next_due(&schedule))
            hooks->before_pass(now);
        schedule_run(&schedule, now, &hooks->pass);
        hooks->wait_until(schedule_next_due(&schedule), hooks->clock());
    }
}

uint32_t main_loop_sleep_milliseconds(double due, double now)
{
    double milliseconds = (due - now) * 1000.0 - 1.0;
    if (!(milliseconds >= 1.0))
        return 0;
    return milliseconds > 1000.0 ? 1000u : static_cast<uint32_t>(milliseconds);
}
