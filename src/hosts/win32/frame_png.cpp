// Frames as PNG files through the Windows Imaging Component. The frame is widened to 24-bit BGR
// here, with the same conversion the other hosts use, rather than handed to WIC as 16-bit BGRA
// 5551: WIC's own converters would widen the channels by their own rule, and Wine's refuses that
// format altogether.
#include "hosts/frame_png.h"

#include <windows.h>
#include <stdlib.h>
#include <wincodec.h>

#include "core/frame.h"
#include "platform/win32/win32_decoders.h"

template <typename T>
static void release(T*& object)
{
    if (object)
        object->Release();
    object = nullptr;
}

// The frame as 24-bit BGR rows, top to bottom, each padded to `stride` bytes.
static BYTE* frame_as_bgr(const uint16_t* pixels, int32_t width, int32_t height, UINT stride)
{
    BYTE* rows = static_cast<BYTE*>(malloc(static_cast<size_t>(stride) * height));
    if (!rows)
        return nullptr;
    for (int32_t y = 0; y < height; ++y) {
        BYTE* row = rows + static_cast<size_t>(y) * stride;
        for (int32_t x = 0; x < width; ++x) {
            uint32_t rgb = frame_pixel_rgb888(pixels[static_cast<size_t>(y) * width + x]);
            row[3 * x] = static_cast<BYTE>(rgb);
            row[3 * x + 1] = static_cast<BYTE>(rgb >> 8);
            row[3 * x + 2] = static_cast<BYTE>(rgb >> 16);
        }
    }
    return rows;
}

static int encode(IWICStream* stream, BYTE* rows, int32_t width, int32_t height, UINT stride)
{
    IWICBitmapEncoder* encoder = nullptr;
    IWICBitmapFrameEncode* frame = nullptr;
    WICPixelFormatGUID format = GUID_WICPixelFormat24bppBGR;
    HRESULT result = wic_factory->CreateEncoder(GUID_ContainerFormatPng, nullptr, &encoder);
    if (SUCCEEDED(result))
        result = encoder->Initialize(stream, WICBitmapEncoderNoCache);
    if (SUCCEEDED(result))
        result = encoder->CreateNewFrame(&frame, nullptr);
    if (SUCCEEDED(result))
        result = frame->Initialize(nullptr);
    if (SUCCEEDED(result))
        result = frame->SetSize(static_cast<UINT>(width), static_cast<UINT>(height));
    if (SUCCEEDED(result))
        result = frame->SetPixelFormat(&format);
    if (SUCCEEDED(result) && !IsEqualGUID(format, GUID_WICPixelFormat24bppBGR))
        result = E_FAIL; // the encoder wants another layout: never write a wrong picture
    if (SUCCEEDED(result))
        result = frame->WritePixels(static_cast<UINT>(height), stride, stride * static_cast<UINT>(height), rows);
    if (SUCCEEDED(result))
        result = frame->Commit();
    if (SUCCEEDED(result))
        result = encoder->Commit();
    release(frame);
    release(encoder);
    return SUCCEEDED(result);
}

int write_frame_png(const char* path, const uint16_t* pixels, int32_t width, int32_t height)
{
    if (!pixels || width <= 0 || height <= 0 || !wic_factory)
        return 0;
    wchar_t wide_path[MAX_PATH];
    if (!MultiByteToWideChar(CP_ACP, 0, path, -1, wide_path, MAX_PATH))
        return 0;
    UINT stride = (static_cast<UINT>(width) * 3 + 3) & ~3u;
    BYTE* rows = frame_as_bgr(pixels, width, height, stride);
    if (!rows)
        return 0;
    IWICStream* stream = nullptr;
    HRESULT result = wic_factory->CreateStream(&stream);
    if (SUCCEEDED(result))
        result = stream->InitializeFromFilename(wide_path, GENERIC_WRITE);
    int written = SUCCEEDED(result) && encode(stream, rows, width, height, stride);
    release(stream);
    free(rows);
    if (!written)
        DeleteFileA(path); // no half-written file left behind
    return written;
}

int make_frame_folder(const char* path)
{
    if (CreateDirectoryA(path, nullptr))
        return 1;
    DWORD attributes = GetFileAttributesA(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}
