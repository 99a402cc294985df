// ecrt_master_*: life, bus, activation, cycle and time.
#include "interface/Invoke.h"

using namespace ethercat_simulation;

unsigned int ecrt_version_magic(void) {
  return ECRT_VERSION_MAGIC;
}

namespace {

ec_master_t* reserve(Master& master) {
  void* handle = master.reservation().held() ? nullptr : Handles::instance().create(master, master);
  return master.reserve() ? static_cast<ec_master_t*>(handle) : nullptr;
}

// To be asked before the end: the real master frees a request that its state machine is still at work on.
void chargeBusyRequests(Master& master, Call call) {
  if (master.setup().hasBusySdoRequest()) {
    master.recorder().addBusyRequest(call, "a");
  }
}

} // namespace

ec_master_t* ecrt_request_master(unsigned int master_index) {
  return takeMaster(Call::requestMaster, master_index, reserve);
}

void ecrt_release_master(ec_master_t* master) {
  const auto work = [&](Master& held) {
    if (Handles::instance().isOpened(master)) {
      Handles::instance().killOne(held, master);
      return Nothing{};
    }
    chargeBusyRequests(held, Call::releaseMaster);
    Handles::instance().killAll(held);
    held.release();
    return Nothing{};
  };
  invoke<Master>(Call::releaseMaster, master, Nothing{}, work, NoArguments());
}

int ecrt_master_get_slave(ec_master_t* master, uint16_t slave_position, ec_slave_info_t* slave_info) {
  return invoke<Master>(
      Call::getSlave, master, BAD_HANDLE_RESULT,
      [&](Master& held) {
        held.catchUp();
        return held.topology().slaveInfo(slave_position, *slave_info);
      },
      [&](const Master&) { return std::to_string(slave_position); });
}

ec_slave_config_t* ecrt_master_slave_config(ec_master_t* master, uint16_t alias, uint16_t position,
                                            uint32_t vendor_id, uint32_t product_code) {
  return invoke<Master, ec_slave_config_t*>(
      Call::slaveConfig, master, nullptr,
      [&](Master& held) {
        SlaveConfiguration* made = held.setup().configuration(alias, position, vendor_id, product_code);
        return made == nullptr ? nullptr
                               : static_cast<ec_slave_config_t*>(Handles::instance().create(*made, held));
      },
      [&](const Master&) {
        return std::to_string(alias) + ", " + std::to_string(position) + ", " + hexText(vendor_id, 8) + ", " +
               hexText(product_code, 8);
      });
}

ec_domain_t* ecrt_master_create_domain(ec_master_t* master) {
  return invoke<Master, ec_domain_t*>(
      Call::createDomain, master, nullptr,
      [](Master& held) {
        return static_cast<ec_domain_t*>(Handles::instance().create(held.setup().createDomain(), held));
      },
      NoArguments());
}

int ecrt_master_activate(ec_master_t* master) {
  return invoke<Master>(
      Call::activate, master, BAD_HANDLE_RESULT, [](Master& held) { return held.activate(); }, NoArguments());
}

void ecrt_master_deactivate(ec_master_t* master) {
  const auto work = [](Master& held) {
    chargeBusyRequests(held, Call::deactivate);
    Handles::instance().killSetUp(held);
    held.deactivate();
    return Nothing{};
  };
  invoke<Master>(Call::deactivate, master, Nothing{}, work, NoArguments());
}

void ecrt_master_receive(ec_master_t* master) {
  const auto work = [](Master& held) {
    held.receive();
    return Nothing{};
  };
  invoke<Master>(Call::receive, master, Nothing{}, work, NoArguments());
}

size_t ecrt_master_send(ec_master_t* master) {
  const auto work = [](Master& held) {
    held.send();
    return std::size_t{0};
  };
  return invoke<Master>(Call::send, master, std::size_t{0}, work, NoArguments());
}

void ecrt_master_state(const ec_master_t* master, ec_master_state_t* state) {
  const auto work = [&](Master& held) {
    held.topology().state(*state);
    return Nothing{};
  };
  invoke<Master>(Call::masterState, master, Nothing{}, work, NoArguments());
}

int ecrt_master_link_state(const ec_master_t* master, unsigned int dev_idx, ec_master_link_state_t* state) {
  const auto work = [&](Master& held) {
    if (dev_idx != 0) { // one device, no backup
      return -EINVAL;
    }
    ec_master_state_t whole{};
    held.topology().state(whole);
    state->slaves_responding = whole.slaves_responding;
    state->al_states = whole.al_states;
    state->link_up = whole.link_up;
    return 0;
  };
  return invoke<Master>(Call::linkState, master, BAD_HANDLE_RESULT, work,
                        [&](const Master&) { return std::to_string(dev_idx); });
}

void ecrt_master_application_time(ec_master_t* master, uint64_t app_time) {
  const auto work = [&](Master& held) {
    held.clock().setApplicationTime(app_time);
    return Nothing{};
  };
  invoke<Master>(Call::applicationTime, master, Nothing{}, work,
                 [&](const Master&) { return std::to_string(app_time); });
}

void ecrt_master_sync_reference_clock(ec_master_t* master) {
  const auto work = [](Master& held) {
    if (held.topology().line().hasReferenceClock()) {
      held.clock().queueReferenceSync();
    }
    return Nothing{};
  };
  invoke<Master>(Call::syncReferenceClock, master, Nothing{}, work, NoArguments());
}

void ecrt_master_sync_slave_clocks(ec_master_t* master) {
  const auto work = [](Master& held) {
    if (held.topology().line().hasReferenceClock()) {
      held.clock().queueRead();
    }
    return Nothing{};
  };
  invoke<Master>(Call::syncSlaveClocks, master, Nothing{}, work, NoArguments());
}

int ecrt_master_reference_clock_time(ec_master_t* master, uint32_t* time) {
  const auto work = [&](Master& held) {
    return held.topology().line().hasReferenceClock() ? held.clock().referenceTime(*time) : -ENXIO;
  };
  return invoke<Master>(Call::referenceClockTime, master, BAD_HANDLE_RESULT, work, NoArguments());
}

int ecrt_master_select_reference_clock(ec_master_t* master, ec_slave_config_t* sc) {
  const auto work = [&](Master& held) {
    if (sc == nullptr) {
      return 0;
    }
    const Handle* configuration = resolve<SlaveConfiguration>(Call::selectReferenceClock, sc);
    if (configuration == nullptr) {
      return BAD_HANDLE_RESULT;
    }
    if (configuration->owner != &held) {
      held.recorder().addForeignHandle(Call::selectReferenceClock);
      return BAD_HANDLE_RESULT;
    }
    return 0; // an unsuitable slave is passed over in silence; all clocks here show the same time
  };
  return invoke<Master>(Call::selectReferenceClock, master, BAD_HANDLE_RESULT, work,
                        [&](const Master&) { return placeText(sc); });
}
