// Windows handles with an owner, and guards that put back what they changed. A handle is null, or
// for files and searches INVALID_HANDLE_VALUE, when nothing is owned.
#pragma once

#include <windows.h>
// After windows.h, on which it depends.
#include <commctrl.h>

#include <utility>

namespace tarvelin {

// Owns one handle; moving empties the source. Traits name the type, the empty value and how a
// handle is closed.
template <class Traits>
class UniqueHandle {
 public:
  using Handle = typename Traits::Handle;

  UniqueHandle() = default;
  explicit UniqueHandle(Handle handle) : handle_(handle) {}
  UniqueHandle(UniqueHandle&& other) noexcept : handle_(other.Release()) {}
  UniqueHandle& operator=(UniqueHandle&& other) noexcept {
    Reset(other.Release());
    return *this;
  }
  UniqueHandle(const UniqueHandle&) = delete;
  UniqueHandle& operator=(const UniqueHandle&) = delete;
  ~UniqueHandle() { Reset(); }

  [[nodiscard]] Handle Get() const { return handle_; }
  [[nodiscard]] explicit operator bool() const { return handle_ != Traits::Empty(); }

  // Gives the handle up without closing it.
  [[nodiscard]] Handle Release() { return std::exchange(handle_, Traits::Empty()); }

  void Reset(Handle handle = Traits::Empty()) {
    const Handle old = std::exchange(handle_, handle);
    if (old != Traits::Empty() && old != handle) Traits::Close(old);
  }

  // Where a function writes a new handle; an owned one is closed first.
  [[nodiscard]] Handle* Put() {
    Reset();
    return &handle_;
  }

 private:
  Handle handle_ = Traits::Empty();
};

template <class T>
struct NullHandleTraits {
  using Handle = T;
  static Handle Empty() { return nullptr; }
};

struct InvalidHandleTraits {
  using Handle = HANDLE;
  static Handle Empty() { return INVALID_HANDLE_VALUE; }
};

template <class T>
struct GdiObjectTraits : NullHandleTraits<T> {
  static void Close(T handle) { DeleteObject(handle); }
};
struct RegistryKeyTraits : NullHandleTraits<HKEY> {
  static void Close(HKEY handle) { RegCloseKey(handle); }
};
struct IconTraits : NullHandleTraits<HICON> {
  static void Close(HICON handle) { DestroyIcon(handle); }
};
struct MemoryDcTraits : NullHandleTraits<HDC> {
  static void Close(HDC handle) { DeleteDC(handle); }
};
struct ModuleTraits : NullHandleTraits<HMODULE> {
  static void Close(HMODULE handle) { FreeLibrary(handle); }
};
struct ImageListTraits : NullHandleTraits<HIMAGELIST> {
  static void Close(HIMAGELIST handle) { ImageList_Destroy(handle); }
};
struct KernelObjectTraits : NullHandleTraits<HANDLE> {
  static void Close(HANDLE handle) { CloseHandle(handle); }
};
struct FileTraits : InvalidHandleTraits {
  static void Close(HANDLE handle) { CloseHandle(handle); }
};
struct FindTraits : InvalidHandleTraits {
  static void Close(HANDLE handle) { FindClose(handle); }
};

using UniqueRegistryKey = UniqueHandle<RegistryKeyTraits>;
using UniqueIcon = UniqueHandle<IconTraits>;
using UniqueBitmap = UniqueHandle<GdiObjectTraits<HBITMAP>>;
using UniqueFont = UniqueHandle<GdiObjectTraits<HFONT>>;
using UniqueMemoryDc = UniqueHandle<MemoryDcTraits>;  // CreateCompatibleDC
using UniqueModule = UniqueHandle<ModuleTraits>;
using UniqueImageList = UniqueHandle<ImageListTraits>;
using UniqueKernelObject = UniqueHandle<KernelObjectTraits>;  // processes, threads, mutexes
using UniqueFile = UniqueHandle<FileTraits>;
using UniqueFind = UniqueHandle<FindTraits>;

// Selects a GDI object into a device context (SelectObject) and the former one back at the end.
class SelectGuard {
 public:
  SelectGuard(HDC dc, HGDIOBJ object) : dc_(dc), former_(SelectObject(dc, object)) {}
  SelectGuard(const SelectGuard&) = delete;
  SelectGuard& operator=(const SelectGuard&) = delete;
  ~SelectGuard() {
    if (former_) SelectObject(dc_, former_);
  }

 private:
  HDC dc_;
  HGDIOBJ former_;
};

// The device context of a window's client area, or of the screen for a null window (GetDC,
// ReleaseDC).
class WindowDc {
 public:
  explicit WindowDc(HWND window) : window_(window), dc_(GetDC(window)) {}
  WindowDc(const WindowDc&) = delete;
  WindowDc& operator=(const WindowDc&) = delete;
  ~WindowDc() {
    if (dc_) ReleaseDC(window_, dc_);
  }

  [[nodiscard]] HDC Get() const { return dc_; }

 private:
  HWND window_;
  HDC dc_;
};

// An export of a loaded module (GetProcAddress) as a function of type `Function`; null when there
// is no module, or it, or this release of Windows, has none of that name.
template <class Function>
[[nodiscard]] Function FindExport(HMODULE module, const char* name) {
  if (!module) return nullptr;  // to GetProcAddress the program itself
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

}  // namespace tarvelin
