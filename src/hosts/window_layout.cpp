#include "hosts/window_layout.h"

#include "core/numbers.h"

client_size window_client_size(int32_t width, int32_t height, float scale)
{
    return client_size{truncate_to_int32(static_cast<float>(width) * scale),
                       truncate_to_int32(static_cast<float>(height) * scale)};
}

client_point client_centre_of(client_size client)
{
    return client_point{(0 + client.width) / 2, (0 + client.height) / 2};
}

window_rectangle centred_window(int32_t outer_width, int32_t outer_height, int32_t screen_width,
                                int32_t screen_height)
{
    return window_rectangle{(screen_width - outer_width) / 2, (screen_height - outer_height) / 2,
                            outer_width, outer_height};
}
