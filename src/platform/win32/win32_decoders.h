// What the Win32 image decoder needs from the Windows host's start-up: the imaging factory that
// the shell creates once COM is initialised (CoCreateInstance of the WIC imaging factory), and
// before which no texture can load. Media Foundation needs only MFStartup to have run.
#pragma once

#include <wincodec.h>

extern IWICImagingFactory* wic_factory; // defined by the image decoder; null until start-up creates it
