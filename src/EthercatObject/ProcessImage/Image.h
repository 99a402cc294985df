#ifndef ETHERCATOBJECT_PROCESSIMAGE_IMAGE_H
#define ETHERCATOBJECT_PROCESSIMAGE_IMAGE_H

// The platform's process image.
struct _IMAGE {
  unsigned char* data = nullptr; // null: not mapped
  unsigned int size = 0;         // bytes that registered entries are known to reach
};

#endif
