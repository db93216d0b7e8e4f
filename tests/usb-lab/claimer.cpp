// A program that has claimed a USB device, and keeps it until it is killed: claimer BUS DEVICE
#include <libusb.h>

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

int main(int argc, char** argv) {
    libusb_context* context = nullptr;
    libusb_device** list = nullptr;
    if (argc != 3 || libusb_init(&context) != LIBUSB_SUCCESS)
        return 2;
    const ssize_t count = libusb_get_device_list(context, &list);
    for (ssize_t i = 0; i < count; ++i) {
        libusb_device_handle* handle = nullptr;
        if (libusb_get_bus_number(list[i]) != std::atoi(argv[1]) ||
            libusb_get_device_address(list[i]) != std::atoi(argv[2]) ||
            libusb_open(list[i], &handle) != LIBUSB_SUCCESS)
            continue;
        libusb_set_auto_detach_kernel_driver(handle, 1);
        if (libusb_claim_interface(handle, 0) != LIBUSB_SUCCESS)
            return 1;
        std::puts("claimed");
        std::fflush(stdout);
        ::pause();
    }
    return 1;
}
