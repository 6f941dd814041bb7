// Export control for the zq750util libraries.
//
// Everything is compiled with hidden visibility; only declarations marked
// with ZQ_EXPORT (the runtime) or ZQ_MEM_EXPORT (the allocator module) are
// visible to other modules.
#ifndef ZQ_EXPORT_H
#define ZQ_EXPORT_H

#define ZQ_VISIBLE __attribute__((visibility("default")))

#define ZQ_EXPORT ZQ_VISIBLE
#define ZQ_MEM_EXPORT ZQ_VISIBLE

#endif  // ZQ_EXPORT_H
