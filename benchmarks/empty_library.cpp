// A DLL that contains only the runtime.
extern "C" __declspec(dllexport) int DoNothing() { return 0; }
