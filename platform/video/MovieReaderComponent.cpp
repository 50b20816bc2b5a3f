#include "platform/video/MovieReaderComponent.h"

#include "platform/com/ClassRegistry.h"
#include "platform/os/FilePath.h"
#include "platform/video/MovieReader.h"

#include <mutex>

namespace qx::video {

namespace {

class MovieReaderObject final : public com::ComObject<IMovieReader, IFileSourceFilter> {
public:
    HRESULT Load(const char16_t* pszFileName, const void*) override
    {
        if (!pszFileName) return E_POINTER;
        const std::lock_guard hold(lock_);
        reader_ = MovieReader::open(os::findPath(pszFileName), 0);
        return reader_ ? S_OK : E_FAIL;
    }
    HRESULT GetWidth(int* width) override
    {
        return answer(width, [](const MovieReader& r) { return r.width(); });
    }
    HRESULT GetHeight(int* height) override
    {
        return answer(height, [](const MovieReader& r) { return r.height(); });
    }
    HRESULT GetDuration(float* seconds) override
    {
        return answer(seconds, [](const MovieReader& r) { return float(r.duration()); });
    }
    HRESULT GetFrame(float seconds, BYTE** pixels) override
    {
        if (!pixels) return E_POINTER;
        const std::lock_guard hold(lock_);
        *pixels = nullptr;
        if (!reader_) return E_UNEXPECTED;
        const uint32_t* frame = reader_->frameAt(seconds);
        if (!frame) return E_FAIL;
        *pixels = reinterpret_cast<BYTE*>(const_cast<uint32_t*>(frame));
        return S_OK;
    }

private:
    template <typename T, typename Get>
    HRESULT answer(T* out, Get get)
    {
        if (!out) return E_POINTER;
        const std::lock_guard hold(lock_);
        if (!reader_) return E_UNEXPECTED;  // nothing loaded
        *out = get(*reader_);
        return S_OK;
    }

    std::mutex lock_;
    std::unique_ptr<MovieReader> reader_;
};

class MovieReaderClass final : public com::ComObject<IClassFactory> {
public:
    HRESULT CreateInstance(IUnknown* outer, const IID& riid, void** ppv) override
    {
        if (!ppv) return E_POINTER;
        *ppv = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        const com::ComPtr<MovieReaderObject> object(new MovieReaderObject());
        return object->QueryInterface(riid, ppv);
    }
    HRESULT LockServer(bool) override { return S_OK; }
};

}  // namespace

HRESULT RegisterMovieReader()
{
    const com::ComPtr<IClassFactory> factory(new MovieReaderClass());
    return CoRegisterClassObject(CLSID_MovieReader, factory.get());
}

HRESULT RevokeMovieReader() { return CoRevokeClassObject(CLSID_MovieReader); }

}  // namespace qx::video
