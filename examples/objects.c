/*
 * A thermostat: why one would use objects, children and signals.
 *
 * A room owns a sensor, a heater and a display. The sensor does not know who listens. The heater is
 * taken away while everything runs, and nothing has to be told: its connections end with it.
 */
#include <kestu.h>

#include <stdio.h>
#include <stdlib.h>

static uint32_t temperature_changed;

static void regulate(kestu_obj_t *sensor, uint32_t code, kestu_obj_t *heater, void *user,
                     void *argument) {
    (void)sensor, (void)code;
    const int temperature = *(int *)argument, wanted = *(int *)user;
    printf("  %s: %s\n", kestu_obj_get_name(heater), temperature < wanted ? "on" : "off");
}

static void show(kestu_obj_t *sensor, uint32_t code, kestu_obj_t *display, void *user,
                 void *argument) {
    (void)code, (void)user;
    printf("  %s: %s measures %d degrees\n", kestu_obj_get_name(display),
           kestu_obj_get_name(sensor), *(int *)argument);
}

static void say_goodbye(kestu_obj_t *obj, void *user) {
    (void)user;
    printf("  %s is gone\n", kestu_obj_get_name(obj));
}

/* Makes an object and gives it to the room, which owns it from then on. */
static kestu_error_t *furnish(kestu_obj_t *room, const char *name, kestu_obj_t **out) {
    kestu_error_t *err = kestu_obj_create(out, name, kestu_obj_get_pool(room));
    if (!err)
        err = kestu_obj_cleanup_register(*out, say_goodbye, NULL);
    return err ? err : kestu_obj_addc(room, *out);
}

static kestu_error_t *measure(kestu_obj_t *room, int temperature) {
    printf("It is %d degrees.\n", temperature);
    return kestu_obj_emit_signal(kestu_obj_getc(room, "sensor"), temperature_changed, &temperature);
}

static kestu_error_t *run(kestu_obj_t *room) {
    static int wanted = 20;
    kestu_obj_t *sensor = NULL, *heater = NULL, *display = NULL;
    kestu_error_t *err = furnish(room, "sensor", &sensor);
    if (!err)
        err = furnish(room, "heater", &heater);
    if (!err)
        err = furnish(room, "display", &display);
    if (!err)
        err = kestu_objsig_register(&temperature_changed, "temperature changed");
    if (!err)
        err = kestu_obj_add_signal(sensor, temperature_changed);
    if (!err)
        err = kestu_obj_connect(sensor, temperature_changed, heater, regulate, &wanted);
    if (!err)
        err = kestu_obj_connect(sensor, temperature_changed, display, show, NULL);
    if (!err)
        err = measure(room, 17);
    if (!err) {
        kestu_obj_destroy(heater);
        err = measure(room, 16);
    }
    return err;
}

int main(void) {
    if (kestu_initialize() != KESTU_INIT_OK)
        return EXIT_FAILURE;
    kestu_obj_t *room = NULL;
    kestu_error_t *err = kestu_obj_engine_init(kestu_pool);
    if (!err)
        err = kestu_obj_create(&room, "room", kestu_pool);
    if (!err) {
        err = run(room);
        kestu_obj_destroy(room);
        err = kestu_error_compose_create(err, kestu_obj_engine_terminate());
    }
    const int status = err ? EXIT_FAILURE : EXIT_SUCCESS;
    kestu_error_clear(kestu_error_handle(err, kestu_error_stdhandler, stderr));
    kestu_terminate();
    return status;
}
