// Audio output through wave-out: two blocks that the system hands back in turn, each refilled
// and written again from inside the callback as soon as it has played.
#include <windows.h>
#include <mmsystem.h>
#include <string.h>

#include "audio/mixer.h"
#include "platform/platform.h"

static_assert(AUDIO_DEFAULT_DEVICE == WAVE_MAPPER, "the default device is the wave mapper");

static HWAVEOUT audio_device;
static WAVEHDR audio_headers[2];
static SRWLOCK voice_lock = SRWLOCK_INIT;

// Runs on the system's audio thread.
static void CALLBACK audio_callback(HWAVEOUT device, UINT message, DWORD_PTR, DWORD_PTR parameter_1, DWORD_PTR)
{
    if (message != WOM_DONE)
        return;
    WAVEHDR* header = reinterpret_cast<WAVEHDR*>(parameter_1);
    audio_refill_block(reinterpret_cast<uint8_t*>(header->lpData), header->dwBufferLength);
    waveOutWrite(device, header, sizeof(WAVEHDR));
}

int platform_audio_open(uint32_t device, uint32_t samples_per_second, uint32_t channels, uint32_t bits_per_sample,
                        uint32_t block_bytes)
{
    WAVEFORMATEX format = {};
    format.wFormatTag = WAVE_FORMAT_PCM;
    format.nChannels = static_cast<WORD>(channels);
    format.nSamplesPerSec = samples_per_second;
    format.wBitsPerSample = static_cast<WORD>(bits_per_sample);
    format.nBlockAlign = static_cast<WORD>(bits_per_sample / 8 * channels);
    format.nAvgBytesPerSec = format.nBlockAlign * samples_per_second;
    format.cbSize = 0;
    if (waveOutOpen(&audio_device, device, &format, reinterpret_cast<DWORD_PTR>(audio_callback), 0,
                    CALLBACK_FUNCTION) != MMSYSERR_NOERROR)
        return 0;
    char* blocks = static_cast<char*>(platform_heap_alloc(2 * static_cast<size_t>(block_bytes)));
    if (!blocks)
        return 0;
    memset(blocks, 0, 2 * static_cast<size_t>(block_bytes));
    for (int i = 0; i < 2; ++i) {
        WAVEHDR& header = audio_headers[i];
        memset(&header, 0, sizeof header);
        header.lpData = blocks + i * static_cast<size_t>(block_bytes);
        header.dwBufferLength = block_bytes;
        if (waveOutPrepareHeader(audio_device, &header, sizeof header) != MMSYSERR_NOERROR)
            return 0;
    }
    // Two blocks of silence start the chain; nothing is ever closed.
    for (WAVEHDR& header : audio_headers)
        if (waveOutWrite(audio_device, &header, sizeof header) != MMSYSERR_NOERROR)
            return 0;
    return 1;
}

void platform_audio_lock()
{
    AcquireSRWLockExclusive(&voice_lock);
}

void platform_audio_unlock()
{
    ReleaseSRWLockExclusive(&voice_lock);
}

void platform_audio_voice_started(int32_t) {}
