// The few functions of the system that the client programs need, declared by hand so that no system header
// is needed.
#pragma once

extern "C" {
__declspec(dllimport) void* __stdcall GetModuleHandleA(const char* name);
__declspec(dllimport) void* __stdcall LoadLibraryA(const char* name);
__declspec(dllimport) int __stdcall FreeLibrary(void* module);
__declspec(dllimport) void* __stdcall GetProcAddress(void* module, const char* name);
__declspec(dllimport) int __stdcall VirtualProtect(void* address, unsigned long long size, unsigned long access,
                                                   unsigned long* former);
__declspec(dllimport) void* __stdcall CreateThread(void* security, unsigned long long stack,
                                                   unsigned long(__stdcall* run)(void*), void* argument,
                                                   unsigned long flags, unsigned long* id);
__declspec(dllimport) unsigned long __stdcall WaitForSingleObject(void* handle, unsigned long milliseconds);
__declspec(dllimport) int __stdcall CloseHandle(void* handle);
__declspec(dllimport) void __stdcall Sleep(unsigned long milliseconds);
__declspec(dllimport) void* __stdcall GetCurrentProcess();
__declspec(dllimport) int __stdcall GetProcessHandleCount(void* process, unsigned long* count);
__declspec(dllimport) void* __stdcall GetProcessHeap();
__declspec(dllimport) int __stdcall HeapValidate(void* heap, unsigned long flags, const void* block);

struct memory_counters {
  unsigned long size, page_faults;
  unsigned long long peak_working_set, working_set, peak_paged_pool, paged_pool, peak_nonpaged_pool, nonpaged_pool,
      page_file, peak_page_file;
};
__declspec(dllimport) int __stdcall K32GetProcessMemoryInfo(void* process, memory_counters* counters,
                                                            unsigned long size);
}
