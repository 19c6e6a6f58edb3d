// Stands for the library of a graphics driver: three cards, of which one doesn't answer.

extern "C" {

struct FakeMemory {
    unsigned long long total, free, used;
};

static int cards[2];
static bool isOpen = false;

int nvmlInit_v2()
{
    isOpen = true;
    return 0;
}
int nvmlShutdown()
{
    isOpen = false;
    return 0;
}
int nvmlDeviceGetCount_v2(unsigned *count)
{
    *count = 3;
    return isOpen ? 0 : 1;
}
int nvmlDeviceGetHandleByIndex_v2(unsigned index, void **card)
{
    if (index < 2)
        *card = &cards[index];
    return index < 2 ? 0 : 6;
}
int nvmlDeviceGetMemoryInfo(void *card, FakeMemory *memory)
{
    memory->total = card == &cards[0] ? 8ULL << 30 : 24ULL << 30;
    return 0;
}
}
