#include "ui/dialogue_box.h"

#include <string.h>

#include "core/frame.h"
#include "core/loop_state.h"
#include "core/numbers.h"
#include "game/dialogue.h"
#include "ui/font.h"
#include "ui/hud.h"

namespace {

// Seconds each phase lasts: closing, opening (at once), shown (the speech typing out).
const float PHASE_SECONDS[3] = {0.2f, 0.0f, 0.25f};

float phase_progress()
{
    float duration = PHASE_SECONDS[dialogue_state.phase];
    if (duration == 0.0f)
        return 1.0f;
    float p = (game_time - dialogue_state.phase_start) / duration;
    return p < 0.0f ? 0.0f : (p > 1.0f ? 1.0f : p);
}

int32_t bottom_bar_rows()
{
    return truncate_to_int32(static_cast<float>(frame_height) * LETTERBOX_BOTTOM_SHARE);
}

// A moved mouse highlights the answer row under the cursor; once the mouse has chosen, moving it
// off every row clears the highlight. A still mouse leaves the highlight as it is.
void follow_mouse(int32_t first_row, int32_t line_height)
{
    if (mouse_delta_x == 0.0f && mouse_delta_y == 0.0f)
        return;
    int32_t under = -1;
    for (int32_t i = 0; i < dialogue_state.choice_count; ++i) {
        int32_t top = first_row + i * line_height;
        if (top <= mouse_y && mouse_y <= top + line_height) {
            under = i;
            break;
        }
    }
    if (under >= 0 || dialogue_state.mouse_hover) {
        dialogue_state.highlighted = under;
        dialogue_state.mouse_hover = 1;
    }
}

void draw_answers(int32_t first_row)
{
    int32_t line_height = static_cast<int32_t>(font_dialogue.line_height);
    follow_mouse(first_row, line_height);
    for (int32_t i = 0; i < dialogue_state.choice_count; ++i) {
        int32_t top = first_row + i * line_height;
        uint16_t colour = COLOUR_ANSWER;
        if (i == dialogue_state.highlighted) {
            fill_rect(0, top, frame_width, top + line_height, COLOUR_ANSWER);
            colour = COLOUR_ANSWER_HIGHLIGHTED;
        }
        const char number[4] = {static_cast<char>('1' + i), '.', ' ', 0}; // at most 8 answers: one digit
        int32_t x = draw_text(DIALOGUE_TEXT_X, top, number, -1, &font_dialogue, colour);
        int32_t length = 0;
        const char* text = dialogue_answer_text(dialogue_state.choices[i], &length);
        draw_text(x, top, text, length, &font_dialogue, colour);
    }
}

} // namespace

void draw_letterbox(float t)
{
    int32_t top = truncate_to_int32(static_cast<float>(frame_height) * LETTERBOX_TOP_SHARE);
    int32_t bottom = bottom_bar_rows();
    if (t < 1.0f) {
        top = truncate_to_int32(static_cast<float>(top) * t);
        bottom = truncate_to_int32(static_cast<float>(bottom) * t);
    }
    fill_rect_unclipped(0, 0, frame_width, top, COLOUR_LETTERBOX);
    fill_rect_unclipped(0, frame_height - bottom, frame_width, frame_height, COLOUR_LETTERBOX);
}

void draw_dialogue()
{
    float p = phase_progress();
    dialogue_state.fade = p;
    if (dialogue_state.phase == DIALOGUE_PHASE_CLOSING) {
        draw_letterbox(1.0f - p);
        return;
    }
    if (dialogue_state.phase == DIALOGUE_PHASE_OPENING) {
        draw_letterbox(p);
        return;
    }
    draw_letterbox(1.0f);
    int32_t length = dialogue_state.text_length;
    int32_t shown = truncate_to_int32(static_cast<float>(length) * p);
    if (shown > length)
        shown = length;
    int32_t line_height = static_cast<int32_t>(font_dialogue.line_height);
    int32_t y = frame_height - bottom_bar_rows() + DIALOGUE_TEXT_INSET;
    int32_t last_line = draw_text_wrapped(DIALOGUE_TEXT_X, y, frame_width - 2 * DIALOGUE_TEXT_INSET,
                                          dialogue_state.text, shown, &font_dialogue, line_height + 2, COLOUR_SPEECH);
    if (p >= 1.0f)
        draw_answers(last_line + truncate_to_int32(static_cast<float>(line_height) * 1.5f));
}
