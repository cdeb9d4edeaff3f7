// Access to record fields that hosts and the library change on different threads without a lock.
#ifndef VEXO_PORT_SHARED_FIELD_H_
#define VEXO_PORT_SHARED_FIELD_H_

namespace vexo {

// Reads a field exactly once and atomically, with acquire semantics.
template <typename T>
T LoadField(const T& field) {
  return __atomic_load_n(&field, __ATOMIC_ACQUIRE);
}

template <typename T>
void StoreField(T* field, T value) {
  __atomic_store_n(field, value, __ATOMIC_RELEASE);
}

}  // namespace vexo

#endif  // VEXO_PORT_SHARED_FIELD_H_
