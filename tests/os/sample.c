/* A library that tells the program that loads it what happens to it. */
extern int sampleLoads, sampleUnloads, sampleLookUps;

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

/* The loader asks at each look-up where this one is. */
static int (*Resolve(void))(void)
{
    ++sampleLookUps;
    return SampleAnswer;
}

int SampleResolved(void) __attribute__((ifunc("Resolve")));
