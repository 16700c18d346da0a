#pragma once

#include <windows.h>
#include <unknwn.h>
#include <wrl/client.h>

#include <atomic>
#include <new>
#include <utility>

// An object given to the browser control. It answers to IUnknown and to the interface's own ID, and
// deletes itself with its last reference. A new object has one reference.
template <typename Interface>
class ComObject : public Interface {
 public:
  virtual ~ComObject() = default;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) return E_POINTER;
    const bool known = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, Interface::kIid);
    *object = known ? static_cast<Interface*>(this) : nullptr;
    if (!known) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

 private:
  std::atomic<ULONG> references_ = 1;
};

// A handler object for the browser control around a function with the parameters of the interface's
// Invoke. Exceptions do not cross into the browser: they become a failure HRESULT.
template <typename Interface, typename Function, typename Method = decltype(&Interface::Invoke)>
class ComCallback;

template <typename Interface, typename Function, typename... Args>
class ComCallback<Interface, Function, HRESULT (STDMETHODCALLTYPE Interface::*)(Args...)> final
    : public ComObject<Interface> {
 public:
  explicit ComCallback(Function function) : function_(std::move(function)) {}
  HRESULT STDMETHODCALLTYPE Invoke(Args... args) override {
    try {
      return function_(args...);
    } catch (const std::bad_alloc&) {
      return E_OUTOFMEMORY;
    } catch (...) {
      return E_FAIL;
    }
  }

 private:
  Function function_;
};

// Takes over the one reference of a new object. (With MinGW's header, ComPtr::Attach adds another.)
template <typename Interface>
Microsoft::WRL::ComPtr<Interface> Adopt(Interface* object) {
  Microsoft::WRL::ComPtr<Interface> owner;
  *owner.GetAddressOf() = object;
  return owner;
}

template <typename Interface, typename Function>
Microsoft::WRL::ComPtr<Interface> MakeCallback(Function function) {
  return Adopt<Interface>(new ComCallback<Interface, Function>(std::move(function)));
}

// Queries an object for another interface. Returns null if the object does not have it.
template <typename Interface>
Microsoft::WRL::ComPtr<Interface> QueryFor(IUnknown* object) {
  Microsoft::WRL::ComPtr<Interface> found;
  object->QueryInterface(Interface::kIid, reinterpret_cast<void**>(found.GetAddressOf()));
  return found;
}
