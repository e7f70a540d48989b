#include <IOManager>

// Never built: every call is an error, which a test looks for in what the compiler says.
void misfits(IOManager* iom, char* text, int* number)
{
    (void)iom->send_command(text, "vornix2 set camera update c%d", "1");
    (void)iom->get_string(text, "system hostname%s", 1);
    (void)iom->get_int(number, "system model%s", 1);
    (void)iom->set_value("system %s %d %d %s", "update", "2", 1, text);
}
