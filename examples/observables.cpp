// Observables: a thermometer notifies its observers, in the same thread and
// in registration order, whenever its reading changes; an alarm registers
// for one notification type once (one-shot); a display stops observing.
#include <vobase/messaging/voobservable.h>
#include <vobase/messaging/voobserver.h>

#include <cstdio>

class CThermometer : public VoObservable
{
public:
    static constexpr EMessageType eChanged = VoObservableMessage::eMT_0;
    static constexpr EMessageType eTooHot = VoObservableMessage::eMT_1;

    void Set(double celsius)
    {
        m_celsius = celsius;
        NotifyObservers(eChanged, &m_celsius);  // every observer of eChanged runs now
        if (celsius > 30)
            NotifyObservers(eTooHot, &m_celsius);
    }

private:
    double m_celsius = 0;
};

class CPrinter : public VoObserver  // prints what it is told, with the text it registered
{
public:
    int calls = 0;

protected:
    void onNotify(VoObservable&, const VoObservableMessage& message, void* callerData) override
    {
        ++calls;
        std::printf("  %s: %.1f C\n", static_cast<const char*>(message.GetUserData()),
                    *static_cast<const double*>(callerData));
    }
};

int main()
{
    CThermometer thermometer;
    CPrinter display, log, alarm;
    display.Observe(thermometer, CThermometer::eChanged, const_cast<char*>("display"), 0);
    log.Observe(thermometer, CThermometer::eChanged, const_cast<char*>("log"), 0);
    alarm.Observe(thermometer, CThermometer::eTooHot, const_cast<char*>("ALARM (once)"), 1);

    for (double celsius : {21.5, 31.0}) {
        std::printf("set %.1f\n", celsius);
        thermometer.Set(celsius);
    }
    display.Unobserve(thermometer);
    std::printf("set 35.0 (display no longer observes, the one-shot alarm is gone)\n");
    thermometer.Set(35.0);

    std::printf("calls: display %d, log %d, alarm %d\n", display.calls, log.calls, alarm.calls);
    return display.calls == 2 && log.calls == 3 && alarm.calls == 1 ? 0 : 1;
}
