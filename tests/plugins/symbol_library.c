/* Exports one function, which calls another one if NEEDED names it. */
#ifdef NEEDED
int NEEDED(void);
#else
#define NEEDED() 42
#endif

int EXPORTED(void) {
    return NEEDED();
}
