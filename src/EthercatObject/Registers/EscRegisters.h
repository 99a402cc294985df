#ifndef ETHERCATOBJECT_REGISTERS_ESCREGISTERS_H
#define ETHERCATOBJECT_REGISTERS_ESCREGISTERS_H

// ESC registers and state requests of single slaves, through the master's device file. Owns nothing: with the
// descriptor -1 every operation is refused. Blocking; not for the cycle.
class CEscRegisters {
public:
  explicit CEscRegisters(int device) : m_iDevice(device) {}

  // `size` bytes of data, which are zeroed first, for writes too: registers only ever receive zeros.
  bool read(unsigned short slave, unsigned short address, unsigned char* data, unsigned long size) const;
  bool write(unsigned short slave, unsigned short address, unsigned char* data, unsigned long size) const;
  bool requestState(unsigned short slave, unsigned char state) const;
  bool clearErrors(unsigned short slave) const;

private:
  bool access(unsigned long code, unsigned short slave, unsigned short address, unsigned char* data,
              unsigned long size) const;

  int m_iDevice;
};

#endif
