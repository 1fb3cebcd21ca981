/* What the system calls when the activity starts. With the NDK, its declaration comes from
   <android/native_activity.h>; without it this library needs nothing at all. */
struct ANativeActivity;

void ANativeActivity_onCreate(struct ANativeActivity* activity, void* state, unsigned long size) {
    (void)activity;
    (void)state;
    (void)size;
}
