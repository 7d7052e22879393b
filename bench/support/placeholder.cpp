// Keeps the support library non-empty before any helper exists.
namespace tessmeta_bench {
int g_placeholder = 0;
}
