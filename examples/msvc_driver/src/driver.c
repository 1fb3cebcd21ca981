/* Takes its device and does nothing with it. */
#include <ntddk.h>
#include <wdf.h>

DRIVER_INITIALIZE DriverEntry;
EVT_WDF_DRIVER_DEVICE_ADD add_device;

NTSTATUS add_device(WDFDRIVER driver, PWDFDEVICE_INIT init) {
    WDFDEVICE device;
    UNREFERENCED_PARAMETER(driver);
    return WdfDeviceCreate(&init, WDF_NO_OBJECT_ATTRIBUTES, &device);
}

NTSTATUS DriverEntry(PDRIVER_OBJECT driver, PUNICODE_STRING registry_path) {
    WDF_DRIVER_CONFIG config;
    WDF_DRIVER_CONFIG_INIT(&config, add_device);
    return WdfDriverCreate(driver, registry_path, WDF_NO_OBJECT_ATTRIBUTES, &config,
                           WDF_NO_HANDLE);
}
