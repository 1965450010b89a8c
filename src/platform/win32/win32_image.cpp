// Images through the Windows Imaging Component: frame 0 of the file converted to 16-bit BGRA 5551
// by a WIC format converter (ordered 4x4 dithering on request, no palette, alpha threshold 0,
// median-cut palette translation). Where the converter refuses that target - Wine's does, either
// at Initialize or later at CopyPixels - the frame is converted to 32-bit BGRA instead and packed
// by the game's own packer, so the game runs the same under Wine and Proton.
#include "platform/platform.h"

#include <windows.h>
#include <wincodec.h>

#include "core/texel_pack.h"
#include "platform/win32/win32_decoders.h"

IWICImagingFactory* wic_factory = nullptr;

struct platform_image_handle {
    IWICBitmapDecoder* decoder;
    IWICBitmapFrameDecode* frame;
    IWICFormatConverter* converter;
    int packs_itself; // 1 once the converter delivers 32-bit BGRA for our own packer
    int dither;
};

template <typename T> static void release(T** object)
{
    if (*object)
        (*object)->Release();
    *object = nullptr;
}

// Replaces the converter by one that delivers 32-bit BGRA.
static int convert_to_bgra(platform_image image)
{
    release(&image->converter);
    image->packs_itself = 1;
    return SUCCEEDED(wic_factory->CreateFormatConverter(&image->converter)) &&
           SUCCEEDED(image->converter->Initialize(image->frame, GUID_WICPixelFormat32bppBGRA,
                                                  WICBitmapDitherTypeNone, nullptr, 0.0,
                                                  WICBitmapPaletteTypeCustom));
}

platform_image platform_image_open(const char* path, int dither)
{
    if (!wic_factory)
        return nullptr;
    platform_image image = static_cast<platform_image>(platform_heap_alloc(sizeof(platform_image_handle)));
    if (!image)
        return nullptr;
    *image = {};
    image->dither = dither;
    wchar_t wide_path[MAX_PATH];
    int ok = SUCCEEDED(wic_factory->CreateFormatConverter(&image->converter)) &&
             MultiByteToWideChar(CP_ACP, 0, path, -1, wide_path, MAX_PATH) != 0 &&
             SUCCEEDED(wic_factory->CreateDecoderFromFilename(wide_path, nullptr, GENERIC_READ,
                                                              WICDecodeMetadataCacheOnLoad, &image->decoder)) &&
             SUCCEEDED(image->decoder->GetFrame(0, &image->frame));
    if (ok) {
        HRESULT result = image->converter->Initialize(
            image->frame, GUID_WICPixelFormat16bppBGRA5551,
            dither ? WICBitmapDitherTypeOrdered4x4 : WICBitmapDitherTypeNone, nullptr, 0.0,
            WICBitmapPaletteTypeMedianCut);
        ok = SUCCEEDED(result) || convert_to_bgra(image);
    }
    if (!ok) {
        platform_image_close(image);
        return nullptr;
    }
    return image;
}

int platform_image_size(platform_image image, uint32_t* width, uint32_t* height)
{
    UINT w = 0, h = 0;
    if (FAILED(image->converter->GetSize(&w, &h)))
        return 0;
    *width = w;
    *height = h;
    return 1;
}

static int copy_packed(platform_image image, uint16_t* texels, uint32_t stride, uint32_t width, uint32_t height)
{
    size_t row_bytes = static_cast<size_t>(width) * 4;
    size_t bytes = row_bytes * height;
    if (bytes > 0xFFFFFFFFu)
        return 0;
    BYTE* pixels = static_cast<BYTE*>(platform_heap_alloc(bytes));
    if (!pixels)
        return 0;
    int ok = SUCCEEDED(image->converter->CopyPixels(nullptr, static_cast<UINT>(row_bytes), static_cast<UINT>(bytes),
                                                   pixels));
    if (ok)
        pack_bgra_to_5551(pixels, static_cast<uint32_t>(row_bytes), texels, stride, width, height, image->dither);
    platform_heap_free(pixels);
    return ok;
}

int platform_image_copy(platform_image image, uint16_t* texels, uint32_t stride)
{
    uint32_t width = 0, height = 0;
    if (!platform_image_size(image, &width, &height))
        return 0;
    if (!image->packs_itself) {
        uint64_t bytes = static_cast<uint64_t>(stride) * height;
        if (bytes <= 0xFFFFFFFFu &&
            SUCCEEDED(image->converter->CopyPixels(nullptr, stride, static_cast<UINT>(bytes),
                                                   reinterpret_cast<BYTE*>(texels))))
            return 1;
        // Accepted at Initialize but refused now: some converters only take 32-bit BGRA sources.
        if (!convert_to_bgra(image))
            return 0;
    }
    return copy_packed(image, texels, stride, width, height);
}

void platform_image_close(platform_image image)
{
    if (!image)
        return;
    release(&image->converter);
    release(&image->frame);
    release(&image->decoder);
    platform_heap_free(image);
}
