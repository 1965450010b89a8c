#include "assets/sound.h"

#include <string.h>

#include "core/diagnostics.h"
#include "core/heap.h"
#include "platform/platform.h"

registry sounds = REGISTRY_OF(sound);

// Appends the decoder's blocks to the record until the stream ends; 0 when a read or a growth fails.
static int read_samples(sound* record, platform_sound_file file, const char* path)
{
    for (;;) {
        const uint8_t* bytes = nullptr;
        uint32_t length = 0;
        int ended = 0;
        if (!platform_sound_file_read(file, &bytes, &length, &ended))
            return report(path, 0, "the samples cannot be read to the end");
        if (ended)
            return 1;
        if (length == 0)
            continue;
        uint8_t* grown = static_cast<uint8_t*>(heap_resize(record->data, static_cast<size_t>(record->size) + length));
        if (!grown)
            return 0;
        record->data = grown;
        memcpy(record->data + record->size, bytes, length);
        record->size += length;
    }
}

int sound_load_file(sound* record, const char* path)
{
    platform_sound_format format = {};
    platform_sound_file file = platform_sound_file_open(path, &format);
    if (!file) {
        // Nothing to say when the file is missing: whoever named it says so.
        if (asset_file_present(path))
            report(path, 0, "not a sound the game can read (it takes uncompressed 8- or 16-bit PCM)");
        return 0;
    }
    memset(record, 0, sizeof *record);
    int ok = 1;
    if (format.bits_per_sample != 8 && format.bits_per_sample != 16)
        ok = report(path, 0, "%u-bit samples: sounds must have 8- or 16-bit samples", format.bits_per_sample);
    else if (format.channels > 2)
        ok = report(path, 0, "%u channels: sounds must be mono or stereo", format.channels);
    if (ok) {
        record->bits_per_sample = format.bits_per_sample;
        record->channels = format.channels;
        record->sample_rate = format.sample_rate;
        // Samples gathered before a failing read stay with the record; only broken files get there.
        ok = read_samples(record, file, path);
    }
    platform_sound_file_close(file);
    return ok;
}

int32_t load_sound(const char* name)
{
    char path[ASSET_PATH_CAPACITY];
    if (!asset_path(path, FOLDER_SOUNDS, name))
        return -1;
    int32_t index = registry_claim(&sounds);
    if (index < 0)
        return -1;
    sound* record = registry_at<sound>(&sounds, index);
    if (!sound_load_file(record, path) || !asset_name_add(ASSET_SOUND, name, index)) {
        // The freed slot gives up whatever it had gathered, so a reused slot leaks nothing.
        if (record->data)
            platform_heap_free(record->data);
        record->data = nullptr;
        record->size = 0;
        registry_free(&sounds, index);
        return -1;
    }
    return index;
}
