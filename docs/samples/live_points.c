/* Prints every stroke while the person signs on a KM730. */
#include <stdatomic.h>
#include <stdio.h>
#include <threads.h>

#include <scriberasdk.h>

enum
{
    capacity = 4096
};

/* The driver thread writes at the end, main() reads at the beginning; neither waits for the other. */
static struct
{
    unsigned long position;
    long pen;
} points[capacity];
static atomic_uint written;
static atomic_uint taken;
static atomic_uint lost;

static void onPoint(unsigned long position, long pen) /* on the driver thread */
{
    const unsigned at = atomic_load(&written);
    if (at - atomic_load(&taken) == capacity) {
        atomic_fetch_add(&lost, 1);
        return;
    }
    points[at % capacity].position = position;
    points[at % capacity].pen = pen;
    atomic_store(&written, at + 1);
}

/* Prints a line for each stroke that has ended, and returns how many points it met. */
static int takePoints(void)
{
    static int strokes;
    static int length;
    int count = 0;
    for (unsigned at = atomic_load(&taken); at != atomic_load(&written);
         atomic_store(&taken, ++at), ++count) {
        const unsigned long position = points[at % capacity].position;
        const long pen = points[at % capacity].pen;
        const double x = (double)(position & 0xFFFF) / 65535; /* 0 left to 1 right */
        const double y = (double)(position >> 16) / 65535;    /* 0 top to 1 bottom */
        ++length;
        if (pen >> 16 == 0) { /* lifted */
            printf("stroke %d: %d points, ends at %.2f, %.2f\n", ++strokes, length, x, y);
            length = 0;
        }
    }
    return count;
}

int main(void)
{
    const struct timespec pause = {.tv_nsec = 10000000};
    int count = 0;
    int key = -1;

    if (!SCKM730_InitialDevice(SCKM730_DEVICE, NULL, 0, 0, 800, 539)) {
        fputs("no pad\n", stderr);
        return 1;
    }
    SCKM730_RealTimeSignatureDataCallback(SCKM730_DEVICE, onPoint);
    for (int turn = 0; key < 0 && turn < 6000; ++turn) {
        key = SCKM730_GetDeviceConfirmOrCancelKeyStatus(SCKM730_DEVICE);
        count += takePoints();
        thrd_sleep(&pause, NULL);
    }
    count += takePoints();
    printf("%d points live, %d stored, %u lost\n", count, SCKM730_GetTotalPacketsNumber(SCKM730_DEVICE),
           atomic_load(&lost));
    SCKM730_UnInitialDevice(SCKM730_DEVICE);
    return key == 1 ? 0 : 1;
}
