/*
 * An adding machine: type numbers, as many on a line as you like, and get their sum. A line that
 * ends with a backslash goes on in the next one. Up and down recall lines, Ctrl-D ends the program.
 */
#include <kestu_lib.h>
#include <kestu_prsd.h>
#include <kestu_readline.h>

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

static void add(const kestu_prsd_t *prsd, double *sum) {
    for (int i = 0; i < prsd->n; ++i) {
        const kestu_prsd_param_t *param = &prsd->params[i];
        if (param->type == KESTU_PRSD_STRING)
            printf("'%s' is no number\n", param->s);
        else
            *sum += param->type == KESTU_PRSD_INT ? param->i : param->d;
    }
    printf("%g\n", *sum);
}

static kestu_error_t *add_lines(kestu_ri_t *ctx, apr_pool_t *pool) {
    double sum = 0.0;
    char *line;
    kestu_prsd_t prsd;
    kestu_error_t *err;
    kestu_prsd_clear_p(&prsd);
    while (!(err = kestu_ri_readline(&line, ctx)) &&
           !(err = kestu_prsd_parse_p(&prsd, line, " \t\n", pool))) {
        if (kestu_prsd_incomplete(&prsd))
            continue;
        add(&prsd, &sum);
        kestu_prsd_clear_p(&prsd);
        apr_pool_clear(pool);
    }
    return err;
}

int main(void) {
    kestu_ri_t *ctx = NULL;
    apr_pool_t *pool;
    if (kestu_initialize() != KESTU_INIT_OK || apr_pool_create(&pool, kestu_pool) != APR_SUCCESS)
        return EXIT_FAILURE;
    kestu_error_t *err = kestu_ri_readline_init(&ctx, "add> ", 1, kestu_pool);
    if (!err)
        err = add_lines(ctx, pool);
    const int failed = err->code != KESTU_ERR_HALTED_BY_USER;
    if (failed) {
        if (ctx) /* some failures leave the terminal as it was while reading */
            tcsetattr(STDIN_FILENO, TCSANOW, &ctx->saved_termios);
        puts("");
        kestu_error_handle(err, kestu_error_stdhandler, stderr);
    }
    kestu_error_clear(err);
    kestu_terminate();
    return failed;
}
