// The control side of a master: every order goes to the part that it concerns.
#ifndef ETHERCAT_SIMULATION_CONTROL_FACE_H
#define ETHERCAT_SIMULATION_CONTROL_FACE_H

#include "control/LockedMaster.h"

#include <ethercat_simulation/Bus.h>

namespace ethercat_simulation {

class ControlFace final : public Bus {
public:
  explicit ControlFace(Master& master) : m_master(master) {}

  // Building, and speed.
  unsigned int addSlave(const Slave& slave) override;
  std::string configure(const std::string& json) override;
  void setTiming(Timing timing) override { m_master->setTiming(timing); }
  void setCycleTime(std::chrono::nanoseconds cycle) override { m_master->time().setCycle(cycle.count()); }
  void passTime(std::chrono::nanoseconds time) override { m_master->time().pass(time.count()); }
  void setClimbCycles(unsigned int cycles) override { m_master->topology().setClimbCycles(cycles); }
  void setFrameLatency(std::chrono::nanoseconds latency) override {
    m_master->traffic().setLatency(latency.count());
  }
  void setFrameTimeout(std::chrono::nanoseconds timeout) override {
    m_master->traffic().setTimeout(timeout.count());
  }
  void setScanCycles(unsigned int cycles) override { m_master->topology().setScanCycles(cycles); }
  void setSdoCycles(unsigned int exchanges) override { m_master->setSdoCycles(exchanges); }
  void setReferenceClock(const ReferenceClock& clock) override { m_master->clock().runFree(clock); }
  void setClockOffsetCycles(unsigned int cycles) override { m_master->clock().setOffsetCycles(cycles); }

  // Faults.
  void dropFrames(unsigned int count) override { m_master->faults().dropFrames(count); }
  void delayFrames(unsigned int count) override { m_master->faults().delayFrames(count); }
  void setLinkUp(bool up) override { m_master->faults().setLinkUp(up); }
  void setWireBroken(unsigned int position, bool broken) override {
    m_master->faults().setWireBroken(position, broken);
  }
  void setPowered(unsigned int position, bool powered) override {
    m_master->faults().setPowered(position, powered);
  }
  void setAlError(unsigned int position, std::uint8_t alState, std::uint16_t alStatusCode) override {
    m_master->faults().setAlError(position, alState, alStatusCode);
  }
  void setErrorFlag(unsigned int position, bool set) override {
    m_master->faults().setErrorFlag(position, set);
  }
  void setResponding(unsigned int position, bool responding) override {
    m_master->faults().setResponding(position, responding);
  }
  void setMaximumState(unsigned int position, std::uint8_t alState) override {
    m_master->faults().setMaximumState(position, alState);
  }
  bool setSdoFault(unsigned int position, std::uint16_t index, std::uint8_t subindex,
                   SdoFault fault) override {
    return m_master->faults().setSdoFault(position, index, subindex, fault);
  }
  bool setDriveTrouble(unsigned int position, DriveTrouble trouble, bool on,
                       std::uint16_t errorCode) override {
    return errorCode != 0 && m_master->faults().setDriveTrouble(position, trouble, on, errorCode);
  }
  void addErrorCount(unsigned int position, std::uint16_t address, unsigned int count) override {
    m_master->faults().addErrorCount(position, address, count);
  }
  void stepReferenceClock(std::int64_t nanoseconds) override {
    m_master->faults().stepReferenceClock(nanoseconds);
  }
  bool addFault(const Fault& fault) override { return m_master->schedule().add(fault); }
  void setFaultSeed(std::uint32_t seed) override { m_master->schedule().setSeed(seed); }
  void clearFaults() override { m_master->schedule().clear(); }
  void removeSlave(unsigned int position) override { m_master->topology().remove(position); }
  void insertSlave(unsigned int position, const Slave& slave) override {
    m_master->topology().insert(position, slave);
  }
  void setReactivationUnmapped(bool unmapped) override {
    m_master->reservation().setReactivationUnmapped(unmapped);
  }
  void setImageNeverMapped(bool never) override { m_master->reservation().setNeverMapped(never); }
  void failNext(Call call, int result, unsigned int after) override {
    m_master->recorder().orderFailure(call, result, after);
  }

  // Looking.
  std::size_t slaveCount() const override { return m_master->topology().line().size(); }
  std::uint8_t alState(unsigned int position) const override;
  bool reserved() const override { return m_master->reservation().held(); }
  bool active() const override { return m_master->reservation().active(); }
  int openDeviceFiles() const override;
  std::uint64_t framesSent() const override { return m_master->traffic().sent(); }
  std::vector<std::uint8_t> outputs(unsigned int position) const override;
  bool outputValue(unsigned int position, std::uint16_t index, std::uint8_t subindex,
                   std::uint64_t& value) const override;
  std::vector<std::uint8_t> inputs(unsigned int position) const override;
  void setInputs(unsigned int position, const std::vector<std::uint8_t>& bytes) override;
  void setInputValue(unsigned int position, std::uint16_t index, std::uint8_t subindex,
                     std::uint64_t value) override;
  std::vector<std::uint8_t> objectValue(unsigned int position, std::uint16_t index,
                                        std::uint8_t subindex) const override;
  bool setObjectValue(unsigned int position, std::uint16_t index, std::uint8_t subindex,
                      const std::vector<std::uint8_t>& bytes) override;
  std::vector<std::uint8_t> registers(unsigned int position, std::uint16_t address,
                                      std::size_t size) const override {
    return m_master->slaves().registers(position, address, size);
  }
  void setRegisters(unsigned int position, std::uint16_t address,
                    const std::vector<std::uint8_t>& bytes) override {
    m_master->slaves().setRegisters(position, address, bytes);
  }
  std::uint64_t referenceTime() const override { return m_master->clock().referenceTime(); }
  std::uint64_t callCount(Call call) const override { return m_master->recorder().counted(call); }
  void setTracing(bool on) override { m_master->recorder().setTracing(on); }
  const std::vector<TraceEntry>& trace() const override { return m_master->recorder().trace(); }
  void clearTrace() override { m_master->recorder().clearTrace(); }
  const Misuse& misuse() const override { return m_master->recorder().misuse(); }
  unsigned int addObserver(Observer observer) override {
    return m_master->observers().add(
        [this, observer = std::move(observer)](std::uint64_t cycle) { observer(*this, cycle); });
  }
  bool removeObserver(unsigned int number) override { return m_master->observers().remove(number); }
  void setRecord(const std::string& path) override { m_master->record().begin(path); }

private:
  LockedMaster m_master;
};

} // namespace ethercat_simulation

#endif
