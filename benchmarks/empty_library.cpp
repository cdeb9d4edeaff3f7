// A DLL with nothing in it but the runtime.
extern "C" __declspec(dllexport) int DoNothing() { return 0; }
