// What libproc tells of any user's process, and the fields of it that wakerly reads.
#include <sys/types.h>

#define PROC_PIDT_SHORTBSDINFO 13

struct proc_bsdshortinfo {
  char pbsi_comm[16];
  uid_t pbsi_uid;
};
