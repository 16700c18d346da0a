#pragma once

#include <windows.h>
#include <objbase.h>

#include <utility>

// Owns one system handle. A kind is a struct with `Type`, `Invalid()` and `Close(Type)`. There is no
// implicit conversion. Call release() for a handle that deliberately outlives its owner.
template <typename Kind>
class Owned {
 public:
  using Type = typename Kind::Type;

  Owned() = default;
  explicit Owned(Type handle) : handle_(handle) {}
  Owned(Owned&& other) noexcept : handle_(other.release()) {}
  Owned& operator=(Owned&& other) noexcept {
    reset(other.release());
    return *this;
  }
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;
  ~Owned() { reset(); }

  explicit operator bool() const { return handle_ != Kind::Invalid(); }
  Type get() const { return handle_; }
  // Closes the current handle and returns the address for an out parameter.
  Type* put() {
    reset();
    return &handle_;
  }
  Type release() { return std::exchange(handle_, Kind::Invalid()); }
  void reset(Type handle = Kind::Invalid()) {
    const Type old = std::exchange(handle_, handle);
    if (old != Kind::Invalid()) Kind::Close(old);
  }

 private:
  Type handle_ = Kind::Invalid();
};

struct KernelHandleKind {
  using Type = HANDLE;
  static Type Invalid() { return nullptr; }
  static void Close(Type handle) { CloseHandle(handle); }
};
// Files, pipes opened by name and snapshots report failure as -1 instead of null.
struct FileHandleKind : KernelHandleKind {
  static Type Invalid() { return INVALID_HANDLE_VALUE; }
};
struct FindHandleKind : FileHandleKind {
  static void Close(Type handle) { FindClose(handle); }
};
struct RegistryKeyKind {
  using Type = HKEY;
  static Type Invalid() { return nullptr; }
  static void Close(Type key) { RegCloseKey(key); }
};
struct TaskMemoryStringKind {
  using Type = PWSTR;
  static Type Invalid() { return nullptr; }
  static void Close(Type text) { CoTaskMemFree(text); }
};

using KernelHandle = Owned<KernelHandleKind>;
using FileHandle = Owned<FileHandleKind>;
using FindHandle = Owned<FindHandleKind>;
using SnapshotHandle = Owned<FileHandleKind>;
using RegistryKey = Owned<RegistryKeyKind>;
using TaskMemoryString = Owned<TaskMemoryStringKind>;
