// Sounds through the Media Foundation source reader: the first audio stream's current type must
// be uncompressed PCM stating its channels, rate and sample size; the samples are then read as the
// file holds them, block by block, with no conversion asked for.
#include "platform/platform.h"

#include <windows.h>
#include <mfapi.h>
#include <mfidl.h>
#include <mfreadwrite.h>

struct platform_sound_file_handle {
    IMFSourceReader* reader;
    IMFSample* sample;      // the block handed out last
    IMFMediaBuffer* buffer; // locked while its bytes are handed out
};

static const DWORD FIRST_AUDIO_STREAM = static_cast<DWORD>(MF_SOURCE_READER_FIRST_AUDIO_STREAM);

static int read_format(IMFSourceReader* reader, platform_sound_format* format)
{
    IMFMediaType* type = nullptr;
    if (FAILED(reader->GetCurrentMediaType(FIRST_AUDIO_STREAM, &type)))
        return 0;
    GUID major = {}, subtype = {};
    UINT32 channels = 0, rate = 0, bits = 0;
    // A missing attribute refuses the stream; compressed streams state no sample size.
    int ok = SUCCEEDED(type->GetGUID(MF_MT_MAJOR_TYPE, &major)) && IsEqualGUID(major, MFMediaType_Audio) &&
             SUCCEEDED(type->GetGUID(MF_MT_SUBTYPE, &subtype)) && IsEqualGUID(subtype, MFAudioFormat_PCM) &&
             SUCCEEDED(type->GetUINT32(MF_MT_AUDIO_NUM_CHANNELS, &channels)) &&
             SUCCEEDED(type->GetUINT32(MF_MT_AUDIO_SAMPLES_PER_SECOND, &rate)) &&
             SUCCEEDED(type->GetUINT32(MF_MT_AUDIO_BITS_PER_SAMPLE, &bits));
    type->Release();
    format->channels = channels;
    format->sample_rate = rate;
    format->bits_per_sample = bits;
    return ok;
}

// Shuts the media source down before the reader goes, so that no work of a stream left unread
// is still running when the reader is gone.
static void release_reader(IMFSourceReader* reader)
{
    IMFMediaSource* source = nullptr;
    if (SUCCEEDED(reader->GetServiceForStream(static_cast<DWORD>(MF_SOURCE_READER_MEDIASOURCE), GUID_NULL,
                                              IID_IMFMediaSource, reinterpret_cast<void**>(&source)))) {
        source->Shutdown();
        source->Release();
    }
    reader->Release();
}

platform_sound_file platform_sound_file_open(const char* path, platform_sound_format* format)
{
    wchar_t wide_path[MAX_PATH];
    if (MultiByteToWideChar(CP_UTF8, 0, path, -1, wide_path, MAX_PATH) == 0)
        return nullptr;
    IMFSourceReader* reader = nullptr;
    if (FAILED(MFCreateSourceReaderFromURL(wide_path, nullptr, &reader)))
        return nullptr;
    platform_sound_file file = nullptr;
    if (read_format(reader, format))
        file = static_cast<platform_sound_file>(platform_heap_alloc(sizeof(platform_sound_file_handle)));
    if (!file) {
        release_reader(reader);
        return nullptr;
    }
    *file = {};
    file->reader = reader;
    return file;
}

static void release_block(platform_sound_file file)
{
    if (file->buffer) {
        file->buffer->Unlock();
        file->buffer->Release();
        file->buffer = nullptr;
    }
    if (file->sample) {
        file->sample->Release();
        file->sample = nullptr;
    }
}

int platform_sound_file_read(platform_sound_file file, const uint8_t** bytes, uint32_t* length, int* ended)
{
    release_block(file);
    DWORD flags = 0;
    if (FAILED(file->reader->ReadSample(FIRST_AUDIO_STREAM, 0, nullptr, &flags, nullptr, &file->sample)) ||
        (flags & MF_SOURCE_READERF_ERROR))
        return 0;
    if (flags & MF_SOURCE_READERF_ENDOFSTREAM) {
        *ended = 1;
        return 1;
    }
    *length = 0;
    if (!file->sample)
        return 1; // a gap in the stream: nothing to append
    IMFMediaBuffer* buffer = nullptr;
    if (FAILED(file->sample->ConvertToContiguousBuffer(&buffer)))
        return 0;
    BYTE* data = nullptr;
    DWORD locked = 0;
    if (FAILED(buffer->Lock(&data, nullptr, &locked))) {
        buffer->Release();
        return 0;
    }
    file->buffer = buffer;
    *bytes = data;
    *length = locked;
    return 1;
}

void platform_sound_file_close(platform_sound_file file)
{
    if (!file)
        return;
    release_block(file);
    release_reader(file->reader);
    platform_heap_free(file);
}
