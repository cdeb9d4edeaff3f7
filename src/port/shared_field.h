// Fields of records that hosts and the library change on different threads without a lock.
#ifndef VEXO_PORT_SHARED_FIELD_H_
#define VEXO_PORT_SHARED_FIELD_H_

namespace vexo {

// Reads a field exactly once and in one piece; sees everything that was written before the field was stored.
template <typename T>
T LoadField(const T& field) {
#if defined(__GNUC__)
  return __atomic_load_n(&field, __ATOMIC_ACQUIRE);
#else
  return *static_cast<const volatile T*>(&field);
#endif
}

template <typename T>
void StoreField(T* field, T value) {
#if defined(__GNUC__)
  __atomic_store_n(field, value, __ATOMIC_RELEASE);
#else
  *static_cast<volatile T*>(field) = value;
#endif
}

}  // namespace vexo

#endif  // VEXO_PORT_SHARED_FIELD_H_
