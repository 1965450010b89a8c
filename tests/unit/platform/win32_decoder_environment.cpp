// The Windows test run starts what the game's Win32 shell starts before any asset loads: COM, the
// imaging factory the texture decoder uses, and Media Foundation for the sound decoder. Like the
// game, it never shuts them down.
#include <gtest/gtest.h>

#include <windows.h>
#include <mfapi.h>
#include <wincodec.h>

#include <stdio.h>

#include "platform/win32/win32_decoders.h"

namespace {

class win32_decoder_environment : public testing::Environment {
    void SetUp() override
    {
        ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
        HRESULT created = CoCreateInstance(CLSID_WICImagingFactory2, nullptr, CLSCTX_INPROC_SERVER,
                                           IID_IWICImagingFactory, reinterpret_cast<void**>(&wic_factory));
        if (FAILED(created)) // systems without the second factory
            created = CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                       IID_IWICImagingFactory, reinterpret_cast<void**>(&wic_factory));
        ASSERT_TRUE(SUCCEEDED(created));
        ASSERT_TRUE(SUCCEEDED(MFStartup(MF_VERSION, MFSTARTUP_FULL)));
    }

    // Nothing is shut down, as in the game: a source reader released just before MFShutdown may
    // still have work queued on Media Foundation's threads, and Wine's then crashes at exit.
};

// Once everything is reported, the process ends at once with the run's status. Even without
// MFShutdown, an ordinary exit unloads Media Foundation's DLLs while its work-queue threads may
// still run, and under Wine that now and again faults after every test has passed.
class end_the_process_once_reported : public testing::EmptyTestEventListener {
    void OnTestProgramEnd(const testing::UnitTest& unit_test) override
    {
        fflush(stdout);
        fflush(stderr);
        TerminateProcess(GetCurrentProcess(), unit_test.Passed() ? 0 : 1);
    }
};

const testing::Environment* const installed = testing::AddGlobalTestEnvironment(new win32_decoder_environment);
testing::TestEventListener* const quick_exit = [] {
    testing::TestEventListener* listener = new end_the_process_once_reported;
    testing::UnitTest::GetInstance()->listeners().Append(listener);
    return listener;
}();

} // namespace
