/* A library that tells the program that loads it what happens to it. */
extern int sampleLoads, sampleUnloads;

int SampleAnswer(void);
int SampleResolved(void);

__attribute__((constructor)) static void Load(void)
{
    ++sampleLoads;
}

__attribute__((destructor)) static void Unload(void)
{
    ++sampleUnloads;
}

int SampleAnswer(void)
{
    return 42;
}

int SampleResolved(void)
{
    return 42;
}
