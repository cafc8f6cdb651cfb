// Loader entry of the module: no notifications per thread.
extern "C" __declspec(dllimport) int __stdcall DisableThreadLibraryCalls(void* module);

extern "C" int __stdcall DllMain(void* module, unsigned long reason, void*) {
  constexpr unsigned long process_attach = 1;
  if (reason == process_attach) DisableThreadLibraryCalls(module);
  return 1;
}
